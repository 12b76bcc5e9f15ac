// Every operator once: what the columns of its row say must agree with each other.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "engine/model_text.hpp"
#include "evaluate/jacobian.hpp"
#include "evaluate/propagator.hpp"
#include "search/inverse.hpp"

namespace engine {
namespace {

constexpr double none = std::numeric_limits<double>::quiet_NaN();
const std::vector<double> here{3.0, 2.0, 4.0, 0.0};

struct Case {
    const char* what;
    const char* expression;  ///< over the reals x = 3, y = 2, the integer n = 4, the boolean c = 0
    double value;            ///< there
    double goal;             ///< a value that one move reaches, or none
    const char* solved;      ///< decisions that the value determines, the others being fixed
};

const Case cases[] = {
    {"sum", "x + y", 5, 11, "xy"},
    {"absorbed products", "-2.0*x + y*3.0", 0, 25, "xy"},
    {"the same term twice", "x + x + y", 8, 12, "y"},
    {"sub", "x - y", 1, -7, "xy"},
    {"prod", "x*y*2", 12, 20, "xy"},
    {"square", "x*x*y", 18, 50, "x"},
    {"prod out of zero", "c*x", 0, 3, "c"},
    {"prod of three, one zero", "c*n*2.0", 0, 8, ""},
    {"max up", "max(x, y)", 3, 9, "x"},
    {"max down", "max(x, 1.0)", 3, 2, "x"},
    {"max of equals", "max(x, n - 1)", 3, 5, ""},
    {"min up", "min(y, 9.0)", 2, 5, "y"},
    {"min down", "min(x, y)", 2, -4, "y"},
    {"abs", "abs(x)", 3, 7, "x"},
    {"abs of the negative", "abs(x - 8)", 5, 7, ""},
    {"dist", "dist(x, y)", 1, 6, ""},
    {"dist the other way", "dist(y, x)", 1, 0.25, ""},
    {"div", "x/y", 1.5, 0.75, "xy"},
    {"mod", "mod(x, 5.0)", 3, 1, ""},
    {"mod of integers", "mod(n, 3)", 1, 2, ""},
    {"round", "round(x)", 3, 8, ""},
    {"floor", "floor(x + 0.5)", 3, 8, ""},
    {"ceil", "ceil(x - 0.5)", 3, 8, ""},
    {"sqrt", "sqrt(y)", std::sqrt(2.0), 3, "y"},
    {"log", "log(y)", std::log(2.0), 2, "y"},
    {"exp", "exp(x)", std::exp(3.0), 0.5, "x"},
    {"pow", "y^3", 8, 30, "y"},
    {"even pow", "x^2", 9, 30, "x"},
    {"root as a power", "y^0.5", std::sqrt(2.0), 3, "y"},
    {"negative pow", "y^-1", 0.5, 0.25, ""},
    {"exponent", "2.0^x", 8, 10, ""},
    {"power of both", "x^y", 9, none, ""},
    {"cos", "cos(x)", std::cos(3.0), 0.25, ""},
    {"sin", "sin(x)", std::sin(3.0), -0.5, ""},
    {"tan", "tan(x)", std::tan(3.0), 2, ""},
    {"if", "if(c, 5.0, x)", 3, 5, "x"},
    {"the other branch", "if(n >= 2, y, x)", 2, 3, "y"},
    {"element", "at(array(7, 8, 9, 1, 2), n)", 2, 9, "n"},
    {"element that moves", "at(array(x, y), c)", 3, 2, "x"},
    {"scalarprod", "scalarprod(array(x, y), array(2.0, n))", 14, 20, ""},
    {"relation as a number", "n >= 6", 0, 1, ""},
    {"out of a domain error", "log(x - 3.0)", none, 0, ""},
    {"out of an index error", "at(array(5, 6), n)", none, 5, ""},
    {"and", "and(c, y < x)", 0, 1, "c"},
    {"or", "or(c, n != 4)", 0, 1, "c"},
    {"xor", "xor(c, n == 4)", 1, 0, "c"},
    {"not", "not(x <= y)", 1, 0, ""},
    {"equation", "n == 5", 0, 1, ""},
    {"disequality", "n != 4", 0, 1, "n"},
    {"strict between doubles", "y > x", 0, 1, ""},
    {"at most", "n <= 3", 0, 1, ""},
};

const std::string decisions = "x: real -100 100; y: real 1 50; n: int 0 9; c: bool;";

/// The case's model, its expression an objective.
struct CaseModel : testing::ModelText {
    explicit CaseModel(const Case& c)
        : ModelText(decisions + "e = " + c.expression + "; minimise e;"), e(named("e")) {}

    [[nodiscard]] std::vector<Value> valuesAt(const std::vector<double>& numbers) const {
        std::vector<Value> values;
        judge(model, testing::pointOf(model, numbers), values);
        return values;
    }
    [[nodiscard]] double at(const std::vector<double>& numbers) const {
        return valuesAt(numbers)[static_cast<std::size_t>(e)].asDouble();
    }
    const ExpressionIndex e;
};

std::vector<double> randomNumbers(Random& random) {
    return {12.0 * random.unit() - 6.0, 1.0 + 7.0 * random.unit(),
            static_cast<double>(random.below(10)), static_cast<double>(random.below(2))};
}

TEST(EveryOperator, HasItsValue) {
    for (const Case& c : cases) {
        const double value = CaseModel(c).at(here);
        EXPECT_TRUE(std::isnan(c.value) ? std::isnan(value) : std::fabs(value - c.value) < 1e-12)
            << c.what << ": " << value;
    }
}

TEST(EveryOperator, HasTheSlopeOfItsDifferenceQuotient) {
    constexpr double h = 1e-6;
    Random random(3);
    for (const Case& c : cases) {
        const CaseModel m(c);
        Gradient gradient(m.model);
        Jacobian jacobian(m.model);
        jacobian.addRow(m.e, m.model.decision[0], 3.0);
        const std::int32_t columnOf[] = {0, 1, -1, -1};
        for (int trial = 0; trial < 20; ++trial) {
            const std::vector<double> at = randomNumbers(random);
            const std::vector<Value> values = m.valuesAt(at);
            gradient.clear();
            gradient.addWeight(m.e, 3.0);
            gradient.accumulate(values);
            const SparseRows& rows = jacobian.compute(values, columnOf);
            for (const std::size_t d : {0U, 1U}) {
                std::vector<double> lower = at;
                std::vector<double> upper = at;
                lower[d] -= h;
                upper[d] += h;
                const double quotient = 3.0 * (m.at(upper) - m.at(lower)) / (2.0 * h);
                // A jump between the two points, or no value at one of them, has no slope.
                if (!(std::fabs(quotient) < 1e4)) continue;
                const double slope = gradient.byDecision(static_cast<DecisionIndex>(d));
                EXPECT_NEAR(slope, quotient, 1e-4 * (1.0 + std::fabs(quotient))) << c.what;
                const double unit[] = {d == 0 ? 1.0 : 0.0, d == 1 ? 1.0 : 0.0};
                EXPECT_NEAR(rows.timesVector(0, unit), slope - (d == 0 ? 3.0 : 0.0), 1e-9)
                    << "the Jacobian's row of " << c.what;
            }
        }
    }
}

/// A box around a point: some decisions fixed, some loose, some free.
std::vector<Interval> boxAround(const ClosedModel& model, const Point& point, Random& random) {
    std::vector<Interval> box;
    for (DecisionIndex d = 0; d < model.nbDecisions(); ++d) {
        const double v = point[static_cast<std::size_t>(d)].asDouble();
        const Interval& domain = model.domain[static_cast<std::size_t>(d)];
        const double loose = model.isDiscrete(d) ? 2.0 : 1.5;
        const double widths[] = {0.0, 0.0, loose, 200.0};
        const double below = widths[random.below(4)];
        const double above = widths[random.below(4)];
        box.push_back({std::fmax(domain.lower, v - below), std::fmin(domain.upper, v + above)});
    }
    return box;
}

double within(const Interval& i, bool isDiscrete, Random& random) {
    const double v = i.lower + (i.upper - i.lower) * random.unit();
    return isDiscrete ? std::round(v) : v;
}

TEST(EveryOperator, KeepsItsSampledValuesInTheImageAndIsExactAtAPoint) {
    Random random(5);
    for (const Case& c : cases) {
        const CaseModel m(c);
        for (int trial = 0; trial < 60; ++trial) {
            const std::vector<double> at = randomNumbers(random);
            const std::vector<Interval> box =
                boxAround(m.model, testing::pointOf(m.model, at), random);
            Propagator propagator(m.model);
            ASSERT_TRUE(propagator.start(box, 10000)) << c.what;
            const Range image = propagator.rangeOf(m.e);
            for (int sample = 0; sample < 12; ++sample) {
                std::vector<double> inside;
                for (std::size_t d = 0; d < box.size(); ++d) {
                    inside.push_back(within(box[d], d >= 2, random));
                }
                const double v = m.at(inside);
                EXPECT_TRUE(std::isnan(v) ? image.mayBeNan : image.contains(v))
                    << c.what << ": " << v << " in [" << image.lower << ", " << image.upper << "]";
            }
        }
        std::vector<Interval> single;
        for (const double v : here) single.push_back({v, v});
        Propagator propagator(m.model);
        propagator.start(single, 10000);
        const Range image = propagator.rangeOf(m.e);
        // A remainder is bounded by its divisor alone.
        if (m.model.operatorOf(m.e) == LS_OP_MOD) continue;
        if (std::isnan(c.value)) {
            EXPECT_TRUE(image.mayBeNan) << c.what;
        } else {
            EXPECT_NEAR(image.lower, c.value, 1e-6) << c.what;
            EXPECT_NEAR(image.upper, c.value, 1e-6) << c.what;
            EXPECT_FALSE(image.mayBeNan) << c.what;
        }
    }
}

TEST(EveryOperator, NarrowsToTheDecisionsThatItsValueDeterminesAndKeepsEveryPoint) {
    Random random(7);
    for (const Case& c : cases) {
        const CaseModel m(c);
        const std::string solved = c.solved;
        for (std::size_t d = 0; d < here.size(); ++d) {
            const testing::ModelText text(
                "x: real 0.5 100; y: real 1 50; n: int 0 9; c: bool; e = " +
                std::string(c.expression) + "; e == " + std::to_string(c.value) + ";");
            if (solved.find("xync"[d]) == std::string::npos) continue;
            std::vector<Interval> box;
            for (const double v : here) box.push_back({v, v});
            box[d] = text.model.domain[d];
            Propagator propagator(text.model);
            ASSERT_TRUE(propagator.start(box, 10000)) << c.what;
            const Interval narrowed = propagator.domainOf(static_cast<DecisionIndex>(d));
            EXPECT_NEAR(narrowed.lower, here[d], 1e-3) << c.what << ", decision " << d;
            EXPECT_NEAR(narrowed.upper, here[d], 1e-3) << c.what << ", decision " << d;
        }
        for (int trial = 0; trial < 60; ++trial) {
            const std::vector<double> at = randomNumbers(random);
            const double v = m.at(at);
            if (std::isnan(v)) continue;
            const double slack = random.chance(0.5) ? 0.0 : random.unit();
            const testing::ModelText text(decisions + "e = " + c.expression +
                                          "; e >= " + std::to_string(v - slack) +
                                          "; e <= " + std::to_string(v) + ";");
            const Point point = testing::pointOf(text.model, at);
            std::vector<Value> values;
            if (!judge(text.model, point, values).feasible) continue;
            Propagator propagator(text.model);
            ASSERT_TRUE(propagator.start(boxAround(text.model, point, random), 10000)) << c.what;
            for (std::size_t d = 0; d < at.size(); ++d) {
                const Interval kept = propagator.domainOf(static_cast<DecisionIndex>(d));
                EXPECT_TRUE(kept.lower <= at[d] && at[d] <= kept.upper)
                    << c.what << ": decision " << d << " = " << at[d];
            }
        }
    }
}

TEST(EveryOperator, IsSolvedForOneDecision) {
    for (const Case& c : cases) {
        if (std::isnan(c.goal)) continue;
        const CaseModel m(c);
        Evaluator evaluator(m.model);
        evaluator.reset(testing::pointOf(m.model, here));
        Random random(1);
        InverseWalk walk(evaluator, m.model.domain, random);
        int nbReached = 0;
        int nbProposed = 0;
        for (int draw = 0; draw < 60; ++draw) {
            const auto move = walk.propose(m.e, Goal::ofNumber(c.goal, 0));
            if (!move) continue;
            ++nbProposed;
            const Evaluator::Mark mark = evaluator.mark();
            evaluator.set(move->decision, move->value);
            evaluator.propagate();
            nbReached += std::fabs(evaluator.valueOf(m.e).asDouble() - c.goal) < 1e-9 ? 1 : 0;
            evaluator.undoTo(mark);
        }
        EXPECT_GT(nbReached, 0) << c.what;
        EXPECT_GE(4 * nbReached, nbProposed) << c.what << ": most moves miss";
    }
}

TEST(EveryOperator, HasADistanceOfZeroExactlyToWhatHolds) {
    Random random(9);
    for (const Case& c : cases) {
        const testing::ModelText text(decisions + "e = " + c.expression + "; and(e); not(e);");
        Evaluator evaluator(text.model);
        for (int trial = 0; trial < 30; ++trial) {
            evaluator.reset(testing::pointOf(text.model, randomNumbers(random)));
            const ExpressionIndex e = text.named("e");
            const Distance distance = evaluator.distanceOf(evaluator.plan().logicOf(e));
            const Value value = evaluator.valueOf(e);
            const bool isNumber = !std::isnan(value.asDouble());
            EXPECT_EQ(distance.toTrue == 0.0, value.isTrue()) << c.what;
            EXPECT_EQ(distance.toFalse == 0.0, isNumber && !value.isTrue()) << c.what;
        }
    }
}

}  // namespace
}  // namespace engine
