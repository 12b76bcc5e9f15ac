#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string>

#include "host/operations.hpp"
#include "translate/link_fixture.hpp"

/// How much of the thread's stack a nested definition takes. Threads of Windows have 1 MiB.

namespace {

std::uintptr_t lowest;
std::uintptr_t highest;

/// Every definition asks for its right-hand side when all that it needs is built.
double noteDepth(vex::ModelHandle, std::int32_t) {
    const char here = 0;
    const auto address = reinterpret_cast<std::uintptr_t>(&here);
    lowest = std::min(lowest, address);
    highest = std::max(highest, address);
    return 1.0;
}

std::int32_t variableNamed(const norv::Model& model, const std::string& name) {
    std::int32_t j = 0;
    while (model.variableName(j) != name) ++j;
    return j;
}

TEST(Nesting, LeavesMostOfASmallStackFree) {
    constexpr int length = vex::NorvLocalSolver::deepestNesting;
    const struct {
        const char* kind;
        const char* before;  // what the row has beside its own variable, around the next one
        const char* after;
    } terms[] = {{"linear", "", ""}, {"product", "z * ", ""}, {"nonlinear", "curved(", ")"}};
    for (const auto& [kind, before, after] : terms) {
        std::ostringstream instance;
        instance << "min 0";
        for (int k = 0; k < length; ++k) {
            instance << " ; d" << k << " : x" << k << " + " << before << 'x' << k + 1 << after
                     << " = 1";
        }
        LinkFixture fixture(instance.str());
        for (int k = 0; k < length; ++k) {
            fixture.define(variableNamed(fixture.model, "x" + std::to_string(k)), k);
        }
        lowest = UINTPTR_MAX;
        highest = 0;
        const SlotOverride rightHandSide(vex::nmoGetRhsOne, "nmoGetRhsOne", &noteDepth);
        fixture.setUp();
        const std::uintptr_t used = (highest - lowest) / (length - 1);
        EXPECT_LT(used, 5120U) << kind;  // 750 KiB at the limit
        RecordProperty(kind, std::to_string(used));
    }
}

}  // namespace
