#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "engine/model_builder.hpp"
#include "evaluate/judge.hpp"

namespace engine {
namespace {

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();

Value i(std::int64_t v) {
    return Value::ofInt(v);
}
Value d(double v) {
    return Value::ofDouble(v);
}

void expectSame(Value actual, Value expected, const std::string& what) {
    EXPECT_EQ(actual.isInt(), expected.isInt()) << what;
    if (expected.isInt()) {
        EXPECT_EQ(actual.asInt(), expected.asInt()) << what;
    } else if (std::isnan(expected.asDouble())) {
        EXPECT_TRUE(std::isnan(actual.asDouble())) << what;
    } else {
        EXPECT_DOUBLE_EQ(actual.asDouble(), expected.asDouble()) << what;
    }
}

struct Case {
    const char* what;
    ls_operator op;
    std::vector<Value> operands;
    Value expected;
};

Value valueOf(const Case& c) {
    testing::ModelBuilder builder;
    std::vector<ExpressionIndex> operands;
    for (const Value v : c.operands) operands.push_back(builder.constant(v));
    const ExpressionIndex e = builder.apply(c.op, operands);
    std::vector<Value> values;
    judge(builder.close(), {}, values);
    return values[static_cast<std::size_t>(e)];
}

TEST(Operators, Arithmetic) {
    const Case cases[] = {
        {"an empty sum is 0", LS_OP_SUM, {}, i(0)},
        {"integers stay integers", LS_OP_SUM, {i(2), i(3)}, i(5)},
        {"one double makes a double", LS_OP_SUM, {i(2), d(0.5)}, d(2.5)},
        {"a total beyond 64 bits is a double", LS_OP_SUM, {i(largest), i(1)}, d(0x1p63)},
        {"only the total counts", LS_OP_SUM, {i(largest), i(1), i(-1)}, i(largest)},
        {"small terms survive large ones", LS_OP_SUM, {d(1e17), d(1.0), d(-1e17)}, d(1.0)},
        {"a sum beyond the doubles is no number", LS_OP_SUM, {d(1e308), d(1e308)}, d(nan)},
        {"neither is a product", LS_OP_PROD, {d(-1e308), i(10)}, d(nan)},
        {"opposite infinities are no number", LS_OP_SUM, {d(inf), i(1), d(-inf)}, d(nan)},
        {"sub overflows to double", LS_OP_SUB, {i(smallest), i(1)}, d(-0x1p63)},
        {"an empty product is 1", LS_OP_PROD, {}, i(1)},
        {"prod overflows to double", LS_OP_PROD, {i(largest), i(2)}, d(0x1p64)},
        {"0 times infinity is 0", LS_OP_PROD, {d(inf), i(0)}, d(0.0)},
        {"0 annihilates a product that overflowed", LS_OP_PROD, {d(1e300), d(1e300), i(0)}, d(0)},
        {"0 times NaN is NaN", LS_OP_PROD, {i(0), d(nan)}, d(nan)},
        {"max keeps the operand's type", LS_OP_MAX, {i(2), d(1.5)}, i(2)},
        {"min is exact for integers", LS_OP_MIN, {i(largest), i(largest - 1)}, i(largest - 1)},
        {"NaN goes through max", LS_OP_MAX, {d(nan), i(2)}, d(nan)},
        {"abs of the smallest integer", LS_OP_ABS, {i(smallest)}, d(0x1p63)},
        {"abs of a double", LS_OP_ABS, {d(-1.5)}, d(1.5)},
        {"dist", LS_OP_DIST, {i(2), i(7)}, i(5)},
        {"div is a double", LS_OP_DIV, {i(7), i(2)}, d(3.5)},
        {"division by zero", LS_OP_DIV, {i(1), i(0)}, d(nan)},
        {"mod takes the dividend's sign", LS_OP_MOD, {i(-7), i(3)}, i(-1)},
        {"mod of the smallest integer by -1", LS_OP_MOD, {i(smallest), i(-1)}, i(0)},
        {"mod by zero", LS_OP_MOD, {i(1), i(0)}, d(nan)},
        {"mod of doubles", LS_OP_MOD, {d(5.5), i(2)}, d(1.5)},
    };
    for (const Case& c : cases) expectSame(valueOf(c), c.expected, c.what);
}

TEST(Operators, RoundingAndFunctions) {
    const Case cases[] = {
        {"halves go away from zero", LS_OP_ROUND, {d(2.5)}, i(3)},
        {"below zero, too", LS_OP_ROUND, {d(-2.5)}, i(-3)},
        {"floor", LS_OP_FLOOR, {d(-0.5)}, i(-1)},
        {"ceil", LS_OP_CEIL, {d(0.5)}, i(1)},
        {"too large for an integer", LS_OP_CEIL, {d(1e19)}, d(1e19)},
        {"-2^63 fits", LS_OP_FLOOR, {d(-0x1p63)}, i(smallest)},
        {"integers need no rounding", LS_OP_ROUND, {i(largest)}, i(largest)},
        {"floor of NaN", LS_OP_FLOOR, {d(nan)}, d(nan)},
        {"sqrt", LS_OP_SQRT, {i(9)}, d(3.0)},
        {"sqrt of a negative number", LS_OP_SQRT, {d(-1e-9)}, d(nan)},
        {"log", LS_OP_LOG, {d(std::exp(2.0))}, d(2.0)},
        {"log of zero", LS_OP_LOG, {i(0)}, d(nan)},
        {"exp overflows", LS_OP_EXP, {i(1000)}, d(nan)},
        {"pow", LS_OP_POW, {i(2), i(-1)}, d(0.5)},
        {"pow of zero, negative exponent", LS_OP_POW, {i(0), d(-0.5)}, d(nan)},
        {"pow of NaN", LS_OP_POW, {d(nan), i(0)}, d(nan)},
        {"to the power NaN", LS_OP_POW, {i(1), d(nan)}, d(nan)},
        {"pow of a negative number", LS_OP_POW, {i(-2), d(0.5)}, d(nan)},
        {"cos", LS_OP_COS, {i(0)}, d(1.0)},
        {"sin", LS_OP_SIN, {i(0)}, d(0.0)},
        {"tan", LS_OP_TAN, {i(0)}, d(0.0)},
        {"sin of infinity", LS_OP_SIN, {d(inf)}, d(nan)},
    };
    for (const Case& c : cases) expectSame(valueOf(c), c.expected, c.what);
}

TEST(Operators, Logic) {
    const Case cases[] = {
        {"any nonzero is true", LS_OP_NOT, {d(0.1)}, i(0)},
        {"minus zero is false", LS_OP_NOT, {d(-0.0)}, i(1)},
        {"an empty and holds", LS_OP_AND, {}, i(1)},
        {"an empty or does not", LS_OP_OR, {}, i(0)},
        {"nor does an empty xor", LS_OP_XOR, {}, i(0)},
        {"xor of three is parity", LS_OP_XOR, {i(1), i(2), i(3)}, i(1)},
        {"xor of two true", LS_OP_XOR, {i(1), i(-1)}, i(0)},
        {"the negation of NaN", LS_OP_NOT, {d(nan)}, d(nan)},
        {"false decides and", LS_OP_AND, {d(nan), i(0)}, i(0)},
        {"true does not", LS_OP_AND, {d(nan), i(1)}, d(nan)},
        {"true decides or", LS_OP_OR, {d(nan), i(1)}, i(1)},
        {"xor never decides", LS_OP_XOR, {d(nan), i(1)}, d(nan)},
        {"if", LS_OP_IF, {d(0.5), i(1), d(nan)}, i(1)},
        {"if not", LS_OP_IF, {i(0), d(nan), i(7)}, i(7)},
        {"if who knows", LS_OP_IF, {d(nan), i(1), i(1)}, d(nan)},
    };
    for (const Case& c : cases) expectSame(valueOf(c), c.expected, c.what);
}

TEST(Operators, RelationsHoldWithinTheToleranceBetweenDoubles) {
    const struct {
        const char* what;
        Value left, right;
        int order;  ///< -1, 0, 1 as the six relations see it; 2: not comparable
    } cases[] = {
        {"integers are exact", i(1000000000), i(1000000001), -1},
        {"beyond 53 bits, too", i(largest), i(largest - 1), 1},
        {"inside the absolute tolerance", d(0.0), d(0.999e-6), 0},
        {"outside", d(0.0), d(1.001e-6), -1},
        {"inside the relative tolerance", d(1e9 + 999.0), d(1e9), 0},
        {"outside", d(1e9 + 1001.0), d(1e9), 1},
        {"relative to the larger side", d(-1e9), d(-1e9 - 999.0), 0},
        {"mixed is as doubles", i(1), d(1.0 + 1e-7), 0},
        {"infinity equals itself", d(inf), d(inf), 0},
        {"and nothing else", d(1e300), d(inf), -1},
        {"opposite huge numbers", d(1.7e308), d(-1.7e308), 1},
        {"NaN is not comparable", d(nan), i(1), 2},
    };
    for (const auto& c : cases) {
        const struct {
            ls_operator op;
            bool holds;
        } relations[] = {{LS_OP_EQ, c.order == 0},  {LS_OP_NEQ, c.order != 0},
                         {LS_OP_GEQ, c.order >= 0}, {LS_OP_LT, c.order < 0},
                         {LS_OP_LEQ, c.order <= 0}, {LS_OP_GT, c.order > 0}};
        for (const auto& r : relations) {
            const Value expected = c.order == 2 ? d(nan) : i(r.holds ? 1 : 0);
            expectSame(valueOf({c.what, r.op, {c.left, c.right}, expected}), expected, c.what);
        }
    }
}

TEST(Operators, Arrays) {
    const struct {
        const char* what;
        Value index, expected;
    } cases[] = {
        {"from 0", i(0), i(4)},           {"a double index is cut", d(1.9), d(0.5)},
        {"behind the end", i(2), d(nan)}, {"before the start", i(-1), d(nan)},
        {"NaN", d(nan), d(nan)},
    };
    for (const auto& c : cases) {
        testing::ModelBuilder b;
        const ExpressionIndex array = b.apply(LS_OP_ARRAY, {b.constant(4), b.constant(0.5)});
        const ExpressionIndex at = b.apply(LS_OP_AT, {array, b.constant(c.index)});
        const ExpressionIndex product = b.apply(LS_OP_SCALARPROD, {array, array});
        std::vector<Value> values;
        judge(b.close(), {}, values);
        expectSame(values[static_cast<std::size_t>(at)], c.expected, c.what);
        expectSame(values[static_cast<std::size_t>(product)], d(16.25), c.what);
    }
}

TEST(Judge, OrdersPointsByFeasibilityThenObjectivesInTheirDirections) {
    testing::ModelBuilder b;
    b.minimise(b.constant(0));
    b.maximise(b.constant(0));
    const ClosedModel model = b.close();
    const struct {
        const char* what;
        Verdict a, b;
        int better;  ///< 1: a, -1: b, 0: none
    } cases[] = {
        {"feasible first", {true, {i(9), i(0)}}, {false, {i(0), i(0)}}, 1},
        {"infeasible points are equal", {false, {i(1), i(0)}}, {false, {i(2), i(0)}}, 0},
        {"the first objective decides", {true, {i(1), i(0)}}, {true, {i(2), i(9)}}, 1},
        {"the second breaks ties", {true, {d(1), i(3)}}, {true, {i(1), i(2)}}, 1},
        {"exact between large integers",
         {true, {i(largest), i(0)}},
         {true, {i(largest - 1), i(0)}},
         -1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(isBetter(model, c.a, c.b), c.better > 0) << c.what;
        EXPECT_EQ(isBetter(model, c.b, c.a), c.better < 0) << c.what;
    }
}

TEST(Judge, ANanConstraintIsViolatedAndSoIsItsNegation) {
    for (const bool isNegated : {false, true}) {
        testing::ModelBuilder b;
        const ExpressionIndex x = b.real(-2.0, 2.0);
        const ExpressionIndex holds = b.apply(LS_OP_LEQ, {b.apply(LS_OP_LOG, {x}), b.constant(0)});
        b.require(isNegated ? b.apply(LS_OP_NOT, {holds}) : holds);
        const ClosedModel model = b.close();
        std::vector<Value> values;
        EXPECT_FALSE(judge(model, {d(-1.0)}, values).feasible);
        EXPECT_EQ(judge(model, {d(0.5)}, values).feasible, !isNegated);
        EXPECT_EQ(judge(model, {d(1.5)}, values).feasible, isNegated);
    }
}

}  // namespace
}  // namespace engine
