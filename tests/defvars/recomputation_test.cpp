#include "defvars/recomputation.hpp"

#include <gtest/gtest.h>

#include "double/host_double.hpp"
#include "host/operations.hpp"
#include "norv/model_builder.hpp"

namespace {

/// Definitions that nest far deeper than a stack of calls could: x0 needs x1 needs x2 …
TEST(Recomputation, NestsWithoutLimit) {
    doubles::bindHost();
    constexpr std::int32_t length = 200000;
    norv::ModelBuilder builder;
    for (std::int32_t j = 0; j <= length; ++j)
        builder.addVariable(0, -1e9, 1e9, j < length ? 9 : 1);
    vex::DefinedVariables definedVariables;
    for (std::int32_t i = 0; i < length; ++i) {
        builder.addRow(0, 1.0);
        builder.addCoefficient(i, i, 1.0);
        builder.addCoefficient(i, i + 1, -1.0);
        definedVariables[i] = i;
    }
    const norv::Environment environment;
    const norv::Model model = builder.finish(environment);
    vex::nmoIndexBaseSet(model.handle(), 0);
    EXPECT_TRUE(vex::evaluateDefinedVariables(model.handle(), definedVariables));
    EXPECT_EQ(model.levels()[0], 1.0 + length);
}

}  // namespace
