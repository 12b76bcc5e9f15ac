// Values at the edges of what an operator is defined for, as text.

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "engine/model_text.hpp"
#include "evaluate/evaluator.hpp"

namespace engine {
namespace {

struct Case {
    const char* what;
    const char* expression;
    const char* value;  ///< with a point, an exponent or a name a double
};

/// The expression's value, by the judge, over no decisions.
Value valueOf(const std::string& expression) {
    const testing::ModelText text("e = " + expression + "; minimise e;");
    std::vector<Value> values;
    judge(text.model, {}, values);
    return values[static_cast<std::size_t>(text.named("e"))];
}

void expectValue(const std::string& expression, Value expected, const std::string& what) {
    const Value actual = valueOf(expression);
    EXPECT_EQ(actual.isInt(), expected.isInt()) << what;
    if (expected.isInt()) {
        EXPECT_EQ(actual.asInt(), expected.asInt()) << what;
    } else if (std::isnan(expected.asDouble())) {
        EXPECT_TRUE(std::isnan(actual.asDouble())) << what;
    } else {
        EXPECT_DOUBLE_EQ(actual.asDouble(), expected.asDouble()) << what;
    }
}

TEST(Operators, ValuesAtTheEdges) {
    const Case cases[] = {
        {"an empty sum is 0", "sum()", "0"},
        {"integers stay integers", "2 + 3", "5"},
        {"one double makes a double", "2 + 0.5", "2.5"},
        {"a total beyond 64 bits is a double", "9223372036854775807 + 1", "9223372036854775808.0"},
        {"only the total counts", "9223372036854775807 + 1 + -1", "9223372036854775807"},
        {"small terms survive large ones", "1e17 + 1.0 + -1e17", "1.0"},
        {"a sum beyond the doubles is no number", "1e308 + 1e308", "nan"},
        {"neither is a product", "-1e308 * 10", "nan"},
        {"opposite infinities are no number", "inf + 1 + -inf", "nan"},
        {"sub overflows to double", "-9223372036854775808 - 1", "-9223372036854775808.0"},
        {"an empty product is 1", "prod()", "1"},
        {"prod overflows to double", "9223372036854775807 * 2", "18446744073709551616.0"},
        {"0 times infinity is 0", "inf * 0", "0.0"},
        {"0 annihilates a product that overflowed", "1e300 * 1e300 * 0", "0.0"},
        {"0 times NaN is NaN", "0 * nan", "nan"},
        {"0 forgives a pole", "0 * (0 ^ -1)", "0.0"},
        {"and so does it among others", "2.5 * (0 ^ -0.5) * 0.0", "0.0"},
        {"a pole is no number", "3 * (0 ^ -1)", "nan"},
        {"nor beside other operators", "max(0 ^ -1, 5)", "nan"},
        {"max keeps the operand's type", "max(2, 1.5)", "2"},
        {"min is exact for integers", "min(9223372036854775807, 9223372036854775806)",
         "9223372036854775806"},
        {"NaN goes through max", "max(nan, 2)", "nan"},
        {"from behind, too", "min(2, nan, 1)", "nan"},
        {"abs of the smallest integer", "abs(-9223372036854775808)", "9223372036854775808.0"},
        {"abs of a double", "abs(-1.5)", "1.5"},
        {"dist", "dist(2, 7)", "5"},
        {"div is a double", "7 / 2", "3.5"},
        {"division by zero", "1 / 0", "nan"},
        {"mod takes the dividend's sign", "mod(-7, 3)", "-1"},
        {"mod of the smallest integer by -1", "mod(-9223372036854775808, -1)", "0"},
        {"mod by zero", "mod(1, 0)", "nan"},
        {"mod of doubles", "mod(5.5, 2)", "1.5"},
        {"halves go away from zero", "round(2.5)", "3"},
        {"below zero, too", "round(-2.5)", "-3"},
        {"floor", "floor(-0.5)", "-1"},
        {"ceil", "ceil(0.5)", "1"},
        {"too large for an integer", "ceil(1e19)", "1e19"},
        {"2^63 is", "floor(9223372036854775808.0)", "9223372036854775808.0"},
        {"-2^63 fits", "floor(-9223372036854775808.0)", "-9223372036854775808"},
        {"integers need no rounding", "round(9223372036854775807)", "9223372036854775807"},
        {"floor of NaN", "floor(nan)", "nan"},
        {"sqrt", "sqrt(9)", "3.0"},
        {"sqrt of a negative number", "sqrt(-1e-9)", "nan"},
        {"log of one", "log(1)", "0.0"},
        {"log of zero", "log(0)", "nan"},
        {"exp overflows", "exp(1000)", "nan"},
        {"pow", "2 ^ -1", "0.5"},
        {"pow of zero, negative exponent", "0 ^ -0.5", "nan"},
        {"pow of NaN", "nan ^ 0", "nan"},
        {"to the power NaN", "1 ^ nan", "nan"},
        {"pow of a negative number", "pow(-2, 0.5)", "nan"},
        {"cos, sin, tan", "cos(0) + sin(0) + tan(0)", "1.0"},
        {"sin of infinity", "sin(inf)", "nan"},
        {"any nonzero is true", "not(0.1)", "0"},
        {"minus zero is false", "not(-0.0)", "1"},
        {"an empty and holds", "and()", "1"},
        {"an empty or does not", "or()", "0"},
        {"nor does an empty xor", "xor()", "0"},
        {"xor of three is parity", "xor(1, 2, 3)", "1"},
        {"xor of two true", "xor(1, -1)", "0"},
        {"the negation of NaN", "not(nan)", "nan"},
        {"false decides and", "and(nan, 0)", "0"},
        {"true does not", "and(nan, 1)", "nan"},
        {"true decides or", "or(nan, 1)", "1"},
        {"false does not", "or(nan, 0)", "nan"},
        {"xor never decides", "xor(nan, 1)", "nan"},
        {"if", "if(0.5, 1, nan)", "1"},
        {"if not", "if(0, nan, 7)", "7"},
        {"if who knows", "if(nan, 1, 1)", "nan"},
        {"an element, from 0", "at(array(4, 0.5), 0)", "4"},
        {"a double index is cut", "at(array(4, 0.5), 1.9)", "0.5"},
        {"behind the end", "at(array(4, 0.5), 2)", "nan"},
        {"before the start", "at(array(4, 0.5), -1)", "nan"},
        {"no index", "at(array(4, 0.5), nan)", "nan"},
        {"scalarprod", "scalarprod(array(4, 0.5), array(2, 3))", "9.5"},
    };
    for (const Case& c : cases) expectValue(c.expression, testing::numberOf(c.value), c.what);
}

TEST(Operators, RelationsHoldWithinTheToleranceBetweenDoubles) {
    const struct {
        const char* what;
        std::string left, right;
        int order;  ///< -1, 0, 1 as the six relations see it; 2: not comparable
    } cases[] = {
        {"integers are exact", "1000000000", "1000000001", -1},
        {"beyond 53 bits, too", "9223372036854775807", "9223372036854775806", 1},
        {"inside the absolute tolerance", "0.0", "0.999e-6", 0},
        {"outside", "0.0", "1.001e-6", -1},
        {"inside the relative tolerance", "1000000999.0", "1e9", 0},
        {"outside", "1000001001.0", "1e9", 1},
        {"relative to the larger side", "-1e9", "-1000000999.0", 0},
        {"mixed is as doubles", "1", "1.0000001", 0},
        {"infinity equals itself", "inf", "inf", 0},
        {"and nothing else", "1e300", "inf", -1},
        {"opposite huge numbers", "1.7e308", "-1.7e308", 1},
        {"NaN is not comparable", "nan", "1", 2},
    };
    for (const auto& c : cases) {
        const std::pair<const char*, bool> relations[] = {
            {" == ", c.order == 0}, {" != ", c.order != 0}, {" >= ", c.order >= 0},
            {" < ", c.order < 0},   {" <= ", c.order <= 0}, {" > ", c.order > 0}};
        for (const auto& [relation, holds] : relations) {
            const Value expected = testing::numberOf(c.order == 2 ? "nan" : holds ? "1" : "0");
            expectValue(c.left + relation + c.right, expected, c.what);
        }
    }
}

TEST(Distance, MeasuresTheWayToATruthValue) {
    const struct {
        const char* what;
        const char* constraint;  ///< over the integers x = 5 and y = 3 and the real r = 1
        double toTrue, toFalse;
    } cases[] = {
        {"an inequality's gap in its scale", "sum(2*x) <= 6", 2.0, 0.0},
        {"its slack and one more step", "sum(2*x) <= 14", 0.0, 2.5},
        {"a strict one needs one more", "sum(2*x) < 10", 0.5, 0.0},
        {"from the other side", "sum(2*x) > 10", 0.5, 0.0},
        {"at least", "sum(2*x) >= 14", 2.0, 0.0},
        {"an equality from above", "sum(2*x) == 8", 1.0, 0.0},
        {"from below", "sum(2*y) == 8", 1.0, 0.0},
        {"a disequality", "x != 5", 1.0, 0.0},
        {"a strict one between reals", "r > 1.0", 2e-6, 0.0},
        {"undefined: from both as far as can be", "log(-1) <= x", 1e12, 1e12},
        {"never farther than that", "1e20 <= x", 1e12, 0.0},
        {"a conjunction adds", "and(x <= 3, y >= 6)", 5.0, 0.0},
        {"and breaks at its weakest", "and(x <= 8, y <= 4)", 0.0, 2.0},
        {"a disjunction takes the cheapest", "or(x <= 3, y >= 6)", 2.0, 0.0},
        {"all of it must go", "or(x <= 7, y <= 6)", 0.0, 7.0},
        {"the cheapest flip", "xor(x <= 3, y >= 6, x <= 8)", 0.0, 2.0},
        {"an undefined part hides the parity", "xor(x <= 3, log(-1))", 1e12, 1e12},
        {"the other branch costs less", "if(x <= 4, y <= 9, x <= 4)", 1.0, 0.0},
        {"a negation turns it", "not(x <= 8)", 4.0, 0.0},
        {"a number is away from 0 by its size", "not(x)", 5.0, 0.0},
        {"and from the truth by 1", "and(x - 5)", 1.0, 0.0},
    };
    for (const auto& c : cases) {
        const testing::ModelText text(std::string("x, y: int 0 9; r: real 0 9;") + c.constraint);
        Evaluator evaluator(text.model);
        evaluator.reset(testing::pointOf(text.model, {5, 3, 1}));
        const Distance distance =
            evaluator.distanceOf(evaluator.plan().logicOf(text.model.constraint[0]));
        EXPECT_DOUBLE_EQ(distance.toTrue, c.toTrue) << c.what;
        EXPECT_DOUBLE_EQ(distance.toFalse, c.toFalse) << c.what;
        EXPECT_EQ(distance.margin() > 0.0, c.toTrue > 0.0) << c.what;
    }
}

}  // namespace
}  // namespace engine
