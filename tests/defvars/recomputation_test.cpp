#include "defvars/recomputation.hpp"

#include <gtest/gtest.h>

#include "double/host_double.hpp"
#include "double/instance_text.hpp"
#include "host/operations.hpp"

namespace {

/// Definitions that nest far deeper than a stack of calls could: x1 needs x2 needs x3 …
TEST(Recomputation, NestsWithoutLimit) {
    doubles::bindHost();
    constexpr std::int32_t length = 200000;
    const norv::Environment environment;
    const norv::Model model = readInstance("chain " + std::to_string(length), environment);
    vex::DefinedVariables definedVariables;
    for (std::int32_t i = 0; i < length; ++i) definedVariables[i] = i;
    vex::nmoIndexBaseSet(model.handle(), 0);
    EXPECT_TRUE(vex::evaluateDefinedVariables(model.handle(), definedVariables));
    EXPECT_EQ(model.levels()[0], length);
}

}  // namespace
