#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

#include "engine/api/solver_fixture.hpp"

// A host's thread on Windows arrives with 53 bits for long double arithmetic, this program's
// has 64.

namespace {

using namespace lstest;

std::uint16_t controlWord() {
    std::uint16_t word = 0;
    __asm__ volatile("fnstcw %0" : "=m"(word));
    return word;
}

void setControlWord(std::uint16_t word) {
    __asm__ volatile("fldcw %0" : : "m"(word));
}

/// 0.7^2.3 as the model's value, computed with the control word in force.
double powerInModel() {
    const SolverHandle s = makeSolver();
    const int x = decision(s.get(), LS_OP_FLOAT, 0.7, 0.7);
    const int power = expression(s.get(), LS_OP_POW, {x, constant(s.get(), 2.3)});
    ls_add_objective(s.get(), power, LS_MINIMIZE);
    ls_close(s.get());
    return ls_expr_get_double_value(s.get(), power);
}

TEST(HostPrecision, ChangesNoDigitAndIsRestored) {
    constexpr std::uint16_t windowsDefault = 0x027f;
    const std::uint16_t before = controlWord();
    const volatile double base = 0.7;
    const double expected = powerInModel();
    setControlWord(windowsDefault);
    const double inHost = powerInModel();
    const double direct = std::pow(base, 2.3);
    const std::uint16_t after = controlWord();
    setControlWord(before);
    EXPECT_EQ(inHost, expected);
    EXPECT_NE(direct, expected) << "this value tells nothing";
    EXPECT_EQ(after, windowsDefault);
}

}  // namespace
