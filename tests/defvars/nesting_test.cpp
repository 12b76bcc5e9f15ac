#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "defvars/recomputation.hpp"
#include "double/exchange.hpp"
#include "double/host_double.hpp"
#include "double/instance_text.hpp"
#include "double/whole_call.hpp"
#include "host/operations.hpp"

namespace {

/// How much of the thread's stack a nested definition takes. Threads of Windows have 1 MiB.
TEST(Nesting, OfExpressionsLeavesMostOfASmallStackFree) {
    std::uintptr_t lowest = UINTPTR_MAX;
    std::uintptr_t highest = 0;
    // An instruction list takes most, and every definition asks for its right-hand side when all
    // that it needs is built.
    doubles::runCase(
        {"for 150 e# : x# + [ 1:x## ] = 1 ; for 150 option defvar x# e# ; hide ls_close"}, [&] {
            doubles::exchange().listen([&](const std::string& name, const auto&, const auto&) {
                const char here = 0;
                if (name != "nmoGetRhsOne") return;
                lowest = std::min(lowest, reinterpret_cast<std::uintptr_t>(&here));
                highest = std::max(highest, reinterpret_cast<std::uintptr_t>(&here));
            });
        });
    const std::uintptr_t used = (highest - lowest) / 149;
    EXPECT_LT(used, 5120U);  // 750 KiB at the limit
    EXPECT_GT(used, 100U);
}

/// Definitions that nest far deeper than a stack of calls could: x1 needs x2 needs x3 …
TEST(Nesting, OfRecomputationHasNoLimit) {
    doubles::bindHost();
    const norv::Environment environment;
    const norv::Model model = readInstance("for 100000 e# : x# - x## = 1", environment);
    vex::DefinedVariables definedVariables;
    for (std::int32_t i = 0; i < model.nbRows(); ++i) definedVariables[i] = i;
    vex::nmoIndexBaseSet(model.handle(), 0);
    EXPECT_TRUE(vex::evaluateDefinedVariables(model.handle(), definedVariables));
    EXPECT_EQ(model.levels()[0], 100000.0);
}

}  // namespace
