#include "evaluate/judge.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/model_text.hpp"

namespace engine {
namespace {

TEST(Judge, OrdersPointsByFeasibilityThenObjectivesInTheirDirections) {
    const testing::ModelText text("minimise 0; maximise 0;");
    const auto i = [](std::int64_t v) { return Value::ofInt(v); };
    const struct {
        const char* what;
        Verdict a, b;
        int better;  ///< 1: a, -1: b, 0: none
    } cases[] = {
        {"feasible first", {true, {i(9), i(0)}}, {false, {i(0), i(0)}}, 1},
        {"infeasible points are equal", {false, {i(1), i(0)}}, {false, {i(2), i(0)}}, 0},
        {"the first objective decides", {true, {i(1), i(0)}}, {true, {i(2), i(9)}}, 1},
        {"the second breaks ties", {true, {Value::ofDouble(1), i(3)}}, {true, {i(1), i(2)}}, 1},
        {"exact between large integers",
         {true, {i(INT64_MAX), i(0)}},
         {true, {i(INT64_MAX - 1), i(0)}},
         -1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(isBetter(text.model, c.a, c.b), c.better > 0) << c.what;
        EXPECT_EQ(isBetter(text.model, c.b, c.a), c.better < 0) << c.what;
    }
}

TEST(Judge, ANanIsNoFeasiblePoint) {
    const struct {
        const char* statement;
        bool atMinusOne, atHalf, atThreeHalves;
    } cases[] = {{"log(x) <= 0;", false, true, false},
                 {"not(log(x) <= 0);", false, false, true},
                 {"minimise log(x);", false, true, true}};
    for (const auto& c : cases) {
        const testing::ModelText text(std::string("x: real -2 2;") + c.statement);
        std::vector<Value> values;
        const auto isFeasible = [&](double x) {
            return judge(text.model, {Value::ofDouble(x)}, values).feasible;
        };
        EXPECT_EQ(isFeasible(-1.0), c.atMinusOne) << c.statement;
        EXPECT_EQ(isFeasible(0.5), c.atHalf) << c.statement;
        EXPECT_EQ(isFeasible(1.5), c.atThreeHalves) << c.statement;
    }
}

}  // namespace
}  // namespace engine
