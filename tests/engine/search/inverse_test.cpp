#include "search/inverse.hpp"

#include <gtest/gtest.h>

#include <cstdint>

#include "engine/model_text.hpp"

namespace engine {
namespace {

TEST(InverseWalk, RoundsToTheSideTheGoalAsksForAndNeverStandsStill) {
    const struct {
        const char* what;
        double number;
        int direction;
        std::int64_t expected;
    } rounding[] = {
        {"at most", 6.7, -1, 6},
        {"at least", 6.3, 1, 7},
        {"nearest", 6.4, 0, 6},
        {"a step up at least", 4.2, 0, 5},
        {"a step down at least", 3.9, 0, 3},
        {"not beyond the bound", 4e18, 0, 9},
        {"rounding noise is none", 6.0000000001, 1, 6},
    };
    const ClosedModel model = testing::ModelText("n: int 0 9;").model;
    Evaluator evaluator(model);
    evaluator.reset({Value::ofInt(4)});
    Random random(1);
    const InverseWalk walk(evaluator, model.domain, random);
    for (const auto& c : rounding) {
        EXPECT_EQ(walk.valueInDomain(0, c.number, c.direction).asInt(), c.expected) << c.what;
    }
}

}  // namespace
}  // namespace engine
