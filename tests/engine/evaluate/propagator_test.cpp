#include "evaluate/propagator.hpp"

#include <gtest/gtest.h>

#include "engine/random_models.hpp"
#include "methods/propagation.hpp"

namespace engine {
namespace {

using testing::ModelText;

struct Case {
    const char* what;
    const char* text;
    /// Domains of the first decisions as "lower upper", or "inconsistent".
    std::vector<Interval> expected;
};

/// Tolerance widens the bounds of reals, never those of integers.
bool isNear(double a, double b, bool isDiscrete) {
    return a == b || (!isDiscrete && std::fabs(a - b) < 2e-5);
}

void check(const Case& c) {
    const ModelText text(c.text);
    const std::optional<Propagator> root = propagatedRoot(text.model);
    ASSERT_EQ(root.has_value(), !c.expected.empty()) << c.what;
    for (std::size_t k = 0; k < c.expected.size(); ++k) {
        const auto d = static_cast<DecisionIndex>(k);
        const Interval domain = root->domainOf(d);
        EXPECT_TRUE(isNear(domain.lower, c.expected[k].lower, text.model.isDiscrete(d)) &&
                    isNear(domain.upper, c.expected[k].upper, text.model.isDiscrete(d)))
            << c.what << ": decision " << d << " in [" << domain.lower << ", " << domain.upper
            << "]";
    }
}

const std::vector<Interval> inconsistent;

TEST(Propagator, Arithmetic) {
    const Case cases[] = {
        {"a row bounds its terms",
         "x: int 0 9; y: int 0 9; leq(sum(prod(x,3.0),y), 7);",
         {{0, 2}, {0, 7}}},
        {"both sides of an equation",
         "x: real 0 10; y: real 2 3; eq(sum(x,y), 4.0);",
         {{1, 2}, {2, 3}}},
        {"one unbounded term",
         "x: real -inf inf; y: real 0 1; geq(sum(x,y), 5);",
         {{4, infinity}, {0, 1}}},
        {"two unbounded terms say nothing",
         "x: real -inf inf; y: real -inf inf; eq(sum(x,y), 5);",
         {{-infinity, infinity}, {-infinity, infinity}}},
        {"a chain of rows",
         "x: int 0 9; y: int 0 9; z: int 0 9; gt(x,y); gt(y,z); geq(z,3);",
         {{5, 9}, {4, 8}, {3, 7}}},
        {"a square", "x: real -5 5; leq(prod(x,x), 4.0);", {{-2, 2}}},
        {"a square with a factor, one branch", "x: real -1 5; geq(prod(x,x,2.0), 18.0);", {{3, 5}}},
        {"a product of two", "x: real 1 2; y: real -9 9; eq(prod(x,y), 4.0);", {{1, 2}, {2, 4}}},
        {"quotient and divisor", "x: int 1 9; y: int 1 9; geq(div(x,y), 4);", {{4, 9}, {1, 2}}},
        {"root, logarithm, exponential",
         "x: real -9 99; y: real -9 99; z: real -9 9; leq(sqrt(x), 3); geq(log(y), 0); leq(exp(z), "
         "1);",
         {{0, 9}, {1, 99}, {-9, 0}}},
        {"powers",
         "x: real -9 9; y: real -9 9; leq(pow(x,2), 4); geq(pow(y,3), 8);",
         {{-2, 2}, {2, 9}}},
        {"absolute value and distance",
         "x: int -9 9; y: int -9 9; leq(abs(x), 2); leq(dist(x,y), 1);",
         {{-2, 2}, {-3, 3}}},
        {"the largest and the smallest",
         "x: int 0 9; y: int 0 3; geq(max(x,y), 5); leq(min(x,7), 6);",
         {{5, 6}, {0, 3}}},
        {"rounding",
         "x: real 0 9; y: real 0 9; geq(floor(x), 3); leq(ceil(y), 2);",
         {{3, 9}, {0, 2}}},
        {"a lookup", "k: int 0 5; geq(at(array(1,5,2,7), k), 4);", {{1, 3}}},
    };
    for (const Case& c : cases) check(c);
}

TEST(Propagator, Logic) {
    const Case cases[] = {
        {"a semi-continuous variable that cannot be 0",
         "x: real 0 10; or(eq(x,0.0), geq(x,2.0)); geq(x,1.0);",
         {{2, 10}}},
        {"a boolean fixed by a double", "b: bool; eq(b, 1.0);", {{1, 1}}},
        {"conjunction, negation", "a: bool; b: bool; and(a, not(b));", {{1, 1}, {0, 0}}},
        {"the last literal of a clause", "a: bool; b: bool; or(a, b); not(a);", {{0, 0}, {1, 1}}},
        {"parity", "a: bool; b: bool; xor(a, b); a;", {{1, 1}, {0, 0}}},
        {"the branch that fits", "c: bool; x: int 0 9; eq(if(c, x, 20), 4);", {{1, 1}, {4, 4}}},
        {"different from a bound", "x: int 0 5; neq(x, 0);", {{1, 5}}},
        {"an implication by values",
         "b: bool; x: int 0 9; leq(x, prod(b, 9)); geq(x, 1);",
         {{1, 1}, {1, 9}}},
        {"a domain error is no way out", "x: int -5 5; not(leq(log(x), 1));", {{3, 5}}},
        {"contradicting literals", "a: bool; a; not(a);", inconsistent},
        {"a sum that cannot be reached", "x: int 0 3; y: int 0 3; geq(sum(x,y), 7);", inconsistent},
        {"no whole number between", "x: int 0 3; eq(prod(x,2), 3);", inconsistent},
        {"a root of what is negative", "x: real -3 -1; geq(sqrt(x), 0);", inconsistent},
        {"a constraint that is false", "x: bool; leq(2, 1);", inconsistent},
        {"an empty domain", "x: int 3 2;", inconsistent},
    };
    for (const Case& c : cases) check(c);
}

TEST(Propagator, NeverCutsOffWhatTheJudgeAccepts) {
    // Each point is at the very edge of the tolerance.
    const struct {
        const char* text;
        std::vector<double> point;
    } cases[] = {
        {"x: real 0 2; leq(x, 1.0);", {1.0 + 0.999999e-6}},
        {"x: real 0 2e6; leq(x, 1e6);", {1e6 + 0.999999}},
        {"x: real -2e6 0; geq(x, -1e6);", {-1e6 - 0.999999}},
        {"x: real 0 9; y: real 0 9; eq(sum(x,y), 5.0); eq(sub(x,y), 1.0);", {3.0000049, 2.0000001}},
        {"x: real 1e-9 1; y: real 0 1e-9; leq(x, y);", {1e-6, 0.0}},
        {"x: real 0 9; leq(exp(x), 2.0);", {0.69314718055994531 + 0.9e-6}},
    };
    std::vector<Value> values;
    for (const auto& c : cases) {
        const ModelText text(c.text);
        Point point;
        for (const double v : c.point) point.push_back(Value::ofDouble(v));
        const std::optional<Propagator> root = propagatedRoot(text.model);
        ASSERT_TRUE(root) << c.text;
        if (!judge(text.model, point, values).feasible) continue;
        for (std::size_t k = 0; k < c.point.size(); ++k) {
            const Interval domain = root->domainOf(static_cast<DecisionIndex>(k));
            EXPECT_LE(domain.lower, c.point[k]) << c.text;
            EXPECT_GE(domain.upper, c.point[k]) << c.text;
        }
    }
}

/// Is there a 0 to a negative power? For ranges it is an infinity, for the judge not a number.
bool hasPole(const ClosedModel& model, const std::vector<Value>& values) {
    return std::any_of(model.order.begin(), model.order.end(), [&](ExpressionIndex e) {
        return model.operatorOf(e) == LS_OP_POW &&
               std::isnan(values[static_cast<std::size_t>(e)].asDouble()) &&
               !values[static_cast<std::size_t>(model.operandsOf(e)[0])].isTrue();
    });
}

/// Every value of every expression at every feasible point lies in the propagated ranges.
void expectRangesHold(const std::string& text, const ClosedModel& model,
                      testing::RandomModels& random, int& nbInconsistent, int& nbNarrowed) {
    Propagator propagator(model);
    const bool consistent = propagator.start(model.domain, 1'000'000);
    nbInconsistent += consistent ? 0 : 1;
    std::vector<Value> values;
    testing::forEachPoint(model, random, [&](const Point& point) {
        if (!judge(model, point, values).feasible || hasPole(model, values)) return;
        ASSERT_TRUE(consistent) << text;
        for (ExpressionIndex e = 0; e < model.nbExpressions(); ++e) {
            const double v = values[static_cast<std::size_t>(e)].asDouble();
            const Range r = propagator.rangeOf(e);
            if (std::isnan(v)) {
                ASSERT_TRUE(r.mayBeNan) << text << "\nexpression " << e;
            } else {
                ASSERT_TRUE(r.contains(v)) << text << "\nexpression " << e << ": " << v
                                           << " not in [" << r.lower << ", " << r.upper << "]";
            }
        }
    });
    for (DecisionIndex d = 0; consistent && d < model.nbDecisions(); ++d) {
        const Interval& before = model.domain[static_cast<std::size_t>(d)];
        const Interval after = propagator.domainOf(d);
        nbNarrowed += after.lower > before.lower || after.upper < before.upper ? 1 : 0;
    }
}

TEST(Propagator, KeepsEveryFeasiblePointOfRandomModels) {
    testing::RandomModels random(20240607);
    int nbInconsistent = 0;
    int nbNarrowed = 0;
    for (int trial = 0; trial < 4000; ++trial) {
        std::string text = random.decisions(/*withReals=*/true);
        for (int i = 1 + random.below(3); i > 0; --i) text += random.expression(3) + ";";
        const ModelText model(text);
        expectRangesHold(text, model.model, random, nbInconsistent, nbNarrowed);
        if (::testing::Test::HasFatalFailure()) return;
    }
    // The models are not so loose that nothing is learnt from them.
    EXPECT_GT(nbInconsistent, 200);
    EXPECT_GT(nbNarrowed, 500);
}

TEST(Propagator, UndoRestoresEveryRange) {
    testing::RandomModels random(7);
    for (int trial = 0; trial < 300; ++trial) {
        std::string statements = random.decisions(/*withReals=*/false);
        statements += random.expression(3) + ";";
        const ModelText text(statements + "leq(" + random.linear(true) + ",3);");
        Propagator propagator(text.model);
        if (!propagator.start(text.model.domain, 100000)) continue;
        const RangeStore before = propagator.ranges();
        const std::size_t mark = propagator.mark();
        for (DecisionIndex d = 0; d < text.model.nbDecisions(); ++d) {
            const double v = propagator.domainOf(d).lower;
            if (!propagator.restrictDecision(d, {v, v}, 100000)) break;
        }
        propagator.undoTo(mark);
        for (ExpressionIndex e = 0; e < text.model.nbExpressions(); ++e) {
            ASSERT_EQ(before.of(e).lower, propagator.rangeOf(e).lower);
            ASSERT_EQ(before.of(e).upper, propagator.rangeOf(e).upper);
            ASSERT_EQ(before.of(e).mayBeNan, propagator.rangeOf(e).mayBeNan);
        }
    }
}

TEST(Propagator, EndsWithinItsWorkLimit) {
    // Converges by 1 each round trip over domains of 10^12.
    const ModelText text("x: int 0 1000000000000; y: int 0 1000000000000; lt(x,y); lt(y,x);");
    Propagator propagator(text.model);
    propagator.start(text.model.domain, 1000);
    EXPECT_LT(propagator.work(), 1100);
}

}  // namespace
}  // namespace engine
