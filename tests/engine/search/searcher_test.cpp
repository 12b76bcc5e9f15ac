#include "search/searcher.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <functional>
#include <numeric>
#include <vector>

#include "engine/model_builder.hpp"
#include "engine/prove/random_models.hpp"
#include "operators/random.hpp"
#include "search/polish.hpp"

namespace engine {
namespace {

using testing::ModelBuilder;
using Row = std::vector<ExpressionIndex>;

const std::atomic<bool> never{false};

Incumbent search(const ClosedModel& model, const Point& start, std::int64_t nbIterations,
                 std::uint64_t seed = 1) {
    Searcher searcher(model, model.domain, {seed, 1});
    searcher.startFrom(start);
    for (std::int64_t n = 0; n < nbIterations; n += 200) searcher.run(200, never);
    return searcher.best();
}

Point lowerBounds(const ClosedModel& model) {
    Point point;
    for (DecisionIndex d = 0; d < model.nbDecisions(); ++d) {
        const double lower = model.domain[static_cast<std::size_t>(d)].lower;
        point.push_back(model.isDiscrete(d) ? Value::ofInt(std::llround(lower))
                                            : Value::ofDouble(lower));
    }
    return point;
}

struct Instance {
    const char* what;
    std::function<void(ModelBuilder&)> build;
    double optimum;
    double tolerance;
    std::int64_t nbIterations;
};

void knapsack(ModelBuilder& b) {
    const double weights[] = {12, 7, 11, 8, 9, 6, 5, 14, 3, 10};
    const double profits[] = {24, 13, 23, 15, 16, 11, 9, 28, 5, 19};
    Row x;
    for (int k = 0; k < 10; ++k) x.push_back(b.boolean());
    b.require(b.apply(LS_OP_LEQ, {b.linear<double>(x, weights), b.constant(40.0)}));
    b.maximise(b.linear<double>(x, profits));
}

void assignment(ModelBuilder& b) {
    // Cost (i - j)^2 plus a rotation that makes i -> i + 1 the cheapest.
    constexpr int n = 6;
    Row x;
    std::vector<double> costs;
    std::vector<Row> rows(n);
    std::vector<Row> columns(n);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            const ExpressionIndex e = b.boolean();
            x.push_back(e);
            rows[static_cast<std::size_t>(i)].push_back(e);
            columns[static_cast<std::size_t>(j)].push_back(e);
            costs.push_back(j == (i + 1) % n ? 1.0 : 5.0 + (i * 7 + j * 3) % 10);
        }
    }
    for (const auto& lines : {rows, columns}) {
        for (const Row& line : lines) {
            b.require(b.apply(LS_OP_EQ, {b.apply(LS_OP_SUM, line), b.constant(1.0)}));
        }
    }
    b.minimise(b.linear<double>(x, costs));
}

void transport(ModelBuilder& b) {
    // Two sources of 30 and 50, three sinks of 20, 25 and 35; all equations.
    const double costs[] = {4, 6, 9, 5, 3, 8};
    Row x;
    for (int k = 0; k < 6; ++k) x.push_back(b.real(0.0, 1e10));
    const struct {
        Row members;
        double amount;
    } lines[] = {{{x[0], x[1], x[2]}, 30},
                 {{x[3], x[4], x[5]}, 50},
                 {{x[0], x[3]}, 20},
                 {{x[1], x[4]}, 25},
                 {{x[2], x[5]}, 35}};
    for (const auto& line : lines) {
        b.require(b.apply(LS_OP_EQ, {b.apply(LS_OP_SUM, line.members), b.constant(line.amount)}));
    }
    b.minimise(b.linear<double>(x, costs));
}

void projection(ModelBuilder& b) {
    // The point of x + y = 1 nearest to (2, 3): (0, 1), at squared distance 8.
    const ExpressionIndex x = b.real(-1e10, 1e10);
    const ExpressionIndex y = b.real(-1e10, 1e10);
    const auto squared = [&](ExpressionIndex e, double center) {
        const ExpressionIndex shifted = b.apply(LS_OP_SUB, {e, b.constant(center)});
        return b.apply(LS_OP_PROD, {shifted, shifted});
    };
    b.require(b.apply(LS_OP_EQ, {b.apply(LS_OP_SUM, {x, y}), b.constant(1.0)}));
    b.minimise(b.apply(LS_OP_SUM, {squared(x, 2.0), squared(y, 3.0)}));
}

void mixedNonlinear(ModelBuilder& b) {
    // min exp(x) + |n - 3.4| with x * n >= 4: n = 5, x = 0.8 is beaten by n = 4, x = 1 only in the
    // second term; compared by hand over all n.
    const ExpressionIndex x = b.real(0.0, 10.0);
    const ExpressionIndex n = b.integer(0.0, 100.0);
    b.require(b.apply(LS_OP_GEQ, {b.apply(LS_OP_PROD, {x, n}), b.constant(4.0)}));
    b.minimise(
        b.apply(LS_OP_SUM, {b.apply(LS_OP_EXP, {x}), b.apply(LS_OP_DIST, {n, b.constant(3.4)})}));
}

double mixedNonlinearOptimum() {
    double best = 1e9;
    for (int n = 1; n <= 100; ++n) {
        if (4.0 / n <= 10.0) best = std::min(best, std::exp(4.0 / n) + std::fabs(n - 3.4));
    }
    return best;
}

void semicontinuous(ModelBuilder& b) {
    // x is 0 or at least 4, y is 0 or at least 3, x + y >= 5, x <= 4.5: 4 of x and 3 of y.
    const ExpressionIndex x = b.real(0.0, 4.5);
    const ExpressionIndex y = b.real(0.0, 10.0);
    const auto zeroOrAtLeast = [&](ExpressionIndex e, double least) {
        b.require(b.apply(LS_OP_OR, {b.apply(LS_OP_EQ, {e, b.constant(0.0)}),
                                     b.apply(LS_OP_GEQ, {e, b.constant(least)})}));
    };
    zeroOrAtLeast(x, 4.0);
    zeroOrAtLeast(y, 3.0);
    b.require(b.apply(LS_OP_GEQ, {b.apply(LS_OP_SUM, {x, y}), b.constant(5.0)}));
    const double costs[] = {1.0, 2.0};
    b.minimise(b.linear<double>(Row{x, y}, costs));
}

void permutationByArray(ModelBuilder& b) {
    // Three different positions in an array; the sum of the elements is to be the largest.
    const ExpressionIndex array = b.apply(
        LS_OP_ARRAY,
        {b.constant(5), b.constant(9), b.constant(1), b.constant(8), b.constant(7), b.constant(2)});
    Row index;
    Row element;
    for (int k = 0; k < 3; ++k) {
        index.push_back(b.integer(0.0, 5.0));
        element.push_back(b.apply(LS_OP_AT, {array, index.back()}));
        for (int l = 0; l < k; ++l) {
            b.require(b.apply(LS_OP_NEQ, {index[static_cast<std::size_t>(l)], index.back()}));
        }
    }
    b.maximise(b.apply(LS_OP_SUM, element));
}

void volume(ModelBuilder& b) {
    // Hock and Schittkowski, test problem 71.
    Row x;
    Row squares;
    for (int k = 0; k < 4; ++k) {
        x.push_back(b.real(1.0, 5.0));
        squares.push_back(b.apply(LS_OP_POW, {x.back(), b.constant(2)}));
    }
    b.require(b.apply(LS_OP_GEQ, {b.apply(LS_OP_PROD, x), b.constant(25.0)}));
    b.require(b.apply(LS_OP_EQ, {b.apply(LS_OP_SUM, squares), b.constant(40.0)}));
    const ExpressionIndex front = b.apply(LS_OP_SUM, {x[0], x[1], x[2]});
    b.minimise(b.apply(LS_OP_SUM, {b.apply(LS_OP_PROD, {x[0], x[3], front}), x[2]}));
}

void flowNetwork(ModelBuilder& b) {
    // A ring of six pipes with flows of either sign, s f |f| equal to the difference of pressures,
    // fed at one node and drained at three: all that can be chosen is how much pressure to buy.
    constexpr int n = 6;
    const double supply[n] = {12.0, -3.0, 0.0, -5.0, -4.0, 0.0};
    const double resistance[n] = {1.0, 2.0, 0.5, 3.0, 1.5, 0.7};
    Row pressure;
    Row flow;
    for (int k = 0; k < n; ++k) pressure.push_back(b.real(k == 3 ? 20.0 : 0.0, 200.0));
    for (int k = 0; k < n; ++k) {
        const auto next = static_cast<std::size_t>((k + 1) % n);
        const ExpressionIndex forward = b.boolean();
        const ExpressionIndex f = b.real(-20.0, 20.0);
        const double twice[] = {2.0, -1.0};
        const double most[] = {20.0, -20.0};
        const ExpressionIndex sign = b.linear<double>(Row{forward, b.constant(1.0)}, twice);
        const ExpressionIndex room = b.linear<double>(Row{forward, b.constant(1.0)}, most);
        b.require(b.apply(LS_OP_LEQ, {f, b.apply(LS_OP_PROD, {forward, b.constant(20.0)})}));
        b.require(b.apply(LS_OP_GEQ, {f, room}));
        b.require(b.apply(LS_OP_EQ, {b.apply(LS_OP_PROD, {sign, b.constant(resistance[k]), f, f}),
                                     b.apply(LS_OP_SUB, {pressure[static_cast<std::size_t>(k)],
                                                         pressure[next]})}));
        flow.push_back(f);
    }
    for (std::size_t k = 0; k < n; ++k) {
        const ExpressionIndex leaving = b.apply(LS_OP_SUB, {flow[k], flow[(k + n - 1) % n]});
        b.require(b.apply(LS_OP_EQ, {leaving, b.constant(supply[k])}));
    }
    b.minimise(pressure[0]);
}

/// By bisection for the flow of the first pipe, at which the ring's differences add up to 0.
double flowNetworkOptimum() {
    const double drained[] = {0.0, 3.0, 3.0, 8.0, 12.0, 12.0};
    const double resistance[] = {1.0, 2.0, 0.5, 3.0, 1.5, 0.7};
    const auto dropAlong = [&](double first, int nbPipes) {
        double drop = 0.0;
        for (int k = 0; k < nbPipes; ++k) {
            const double f = first - drained[k];
            drop += resistance[k] * f * std::fabs(f);
        }
        return drop;
    };
    double low = 0.0;
    double high = 12.0;
    for (int n = 0; n < 100; ++n) {
        const double middle = 0.5 * (low + high);
        (dropAlong(middle, 6) < 0.0 ? low : high) = middle;
    }
    double leastDrop = 0.0;
    for (int k = 1; k < 6; ++k) leastDrop = std::fmax(leastDrop, dropAlong(low, k));
    return std::fmax(20.0 + dropAlong(low, 3), leastDrop);
}

void rosenbrock(ModelBuilder& b) {
    const ExpressionIndex x = b.real(-5.0, 5.0);
    const ExpressionIndex y = b.real(-5.0, 5.0);
    const ExpressionIndex two = b.constant(2);
    const ExpressionIndex valley = b.apply(LS_OP_SUB, {y, b.apply(LS_OP_POW, {x, two})});
    b.minimise(
        b.apply(LS_OP_SUM, {b.apply(LS_OP_POW, {b.apply(LS_OP_SUB, {b.constant(1), x}), two}),
                            b.apply(LS_OP_PROD, {b.constant(100), valley, valley})}));
}

TEST(Searcher, ReachesKnownOptimaFromTheLowerBounds) {
    const Instance instances[] = {
        {"a knapsack", knapsack, 80.0, 0.0, 5000},
        {"an assignment", assignment, 6.0, 0.0, 2000},
        {"a transport problem, all equations", transport, 445.0, 1e-3, 2000},
        {"a projection on a line", projection, 8.0, 1e-3, 2000},
        {"a mixed nonlinear problem", mixedNonlinear, mixedNonlinearOptimum(), 1e-4, 2000},
        {"semicontinuous variables", semicontinuous, 10.0, 1e-4, 2000},
        {"positions in an array", permutationByArray, 24.0, 0.0, 2000},
        {"a curved valley", rosenbrock, 0.0, 1e-6, 2000},
        {"flows that follow pressures", flowNetwork, flowNetworkOptimum(), 1e-3, 9000},
        {"nonlinear equations", volume, 17.0140173, 1e-4, 2000},
    };
    for (const Instance& instance : instances) {
        ModelBuilder builder;
        instance.build(builder);
        const ClosedModel model = builder.close();
        for (const std::uint64_t seed : {1U, 2U, 3U}) {
            const Incumbent best = search(model, lowerBounds(model), instance.nbIterations, seed);
            ASSERT_TRUE(best.verdict.feasible) << instance.what << ", seed " << seed;
            EXPECT_NEAR(best.verdict.objectives[0].asDouble(), instance.optimum,
                        instance.tolerance + 1e-5 * std::fabs(instance.optimum))
                << instance.what << ", seed " << seed;
            std::vector<Value> values;
            EXPECT_TRUE(judge(model, best.point, values).feasible) << instance.what;
        }
    }
}

ClosedModel built(void (*build)(ModelBuilder&)) {
    ModelBuilder builder;
    build(builder);
    return builder.close();
}

bool areSame(const Point& a, const Point& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](Value x, Value y) {
        return x.isInt() == y.isInt() && x.asDouble() == y.asDouble();
    });
}

TEST(Searcher, TheSameSeedGivesTheSamePointAndAnotherSeedAnother) {
    bool differs = false;
    for (const auto build : {assignment, transport, mixedNonlinear}) {
        const ClosedModel model = built(build);
        Searcher once(model, model.domain, {5, 1});
        Searcher again(model, model.domain, {5, 1});
        Searcher other(model, model.domain, {6, 1});
        for (Searcher* searcher : {&once, &again, &other}) {
            searcher->startFrom(lowerBounds(model));
            for (int n = 0; n < 3; ++n) searcher->run(50, never);
        }
        EXPECT_TRUE(areSame(once.best().point, again.best().point));
        EXPECT_EQ(once.statistics().accepted, again.statistics().accepted);
        differs = differs || !areSame(once.best().point, other.best().point);
    }
    EXPECT_TRUE(differs);
}

TEST(Searcher, CountsItsIterationsAndStopsWhenAsked) {
    const ClosedModel model = built(knapsack);
    Searcher searcher(model, model.domain, {});
    searcher.startFrom(lowerBounds(model));
    searcher.run(123, never);
    EXPECT_EQ(searcher.statistics().iterations, 123);
    const std::atomic<bool> stop{true};
    searcher.run(1000, stop);
    EXPECT_EQ(searcher.statistics().iterations, 123);
}

TEST(Searcher, AdoptsABetterPointOnlyAndGoesOnFromIt) {
    const ClosedModel model = built(transport);
    const Incumbent good = search(model, lowerBounds(model), 2000);
    ASSERT_TRUE(good.verdict.feasible);
    Searcher searcher(model, model.domain, {9, 1});
    searcher.startFrom(lowerBounds(model));
    ASSERT_FALSE(searcher.best().verdict.feasible);
    const Incumbent start = searcher.best();
    searcher.adopt(good);
    EXPECT_TRUE(areSame(searcher.best().point, good.point));
    searcher.adopt(start);
    EXPECT_TRUE(areSame(searcher.best().point, good.point)) << "an infeasible point is no better";
    searcher.run(200, never);
    EXPECT_FALSE(isBetter(model, good.verdict, searcher.best().verdict));
}

TEST(Searcher, TakesObjectivesByPriority) {
    // x + y <= 10; x first, then y counts against z = 3y - x.
    ModelBuilder b;
    const ExpressionIndex x = b.integer(0.0, 8.0);
    const ExpressionIndex y = b.integer(0.0, 8.0);
    b.require(b.apply(LS_OP_LEQ, {b.apply(LS_OP_SUM, {x, y}), b.constant(10)}));
    b.maximise(x);
    const double coefficients[] = {3.0, -1.0};
    b.maximise(b.linear<double>(Row{y, x}, coefficients));
    const ClosedModel model = b.close();
    const Incumbent best = search(model, lowerBounds(model), 6000);
    ASSERT_TRUE(best.verdict.feasible);
    EXPECT_EQ(best.verdict.objectives[0].asDouble(), 8.0);
    EXPECT_EQ(best.verdict.objectives[1].asDouble(), -2.0);
}

TEST(Searcher, KeepsDomainErrorsOutOfItsPoints) {
    testing::RandomModels random(21);
    for (int trial = 0; trial < 150; ++trial) {
        std::string text = random.decisions(/*withReals=*/true) + "r: real -1e10 4.0;";
        text += "geq(" + random.expression(3) + ",sum(log(r)," + random.linear(false) + "));";
        text += "eq(div(" + random.expression(2) + ",r)," + random.expression(2) + ");";
        text += "minimise sum(sqrt(r)," + random.expression(3) + ");";
        const ClosedModel model = testing::ModelText(text).model;
        const Incumbent best = search(model, lowerBounds(model), 400, 3);
        for (std::size_t d = 0; d < best.point.size(); ++d) {
            const double v = best.point[d].asDouble();
            ASSERT_TRUE(v >= model.domain[d].lower && v <= model.domain[d].upper) << text << v;
        }
        std::vector<Value> values;
        const Verdict verdict = judge(model, best.point, values);
        ASSERT_EQ(verdict.feasible, best.verdict.feasible) << text;
        EXPECT_TRUE(std::isfinite(best.violation)) << text;
    }
}

TEST(Polish, MeetsEquationsMoreTightlyThanTheToleranceAsks) {
    // Between sides of a million the tolerance is 1: x = 0.5 passes for 1.
    ModelBuilder b;
    const ExpressionIndex x = b.real(0.0, 9.0);
    const ExpressionIndex n = b.integer(0.0, 9.0);
    const ExpressionIndex left = b.apply(LS_OP_SUM, {b.apply(LS_OP_POW, {x, n}), b.constant(1e6)});
    b.require(b.apply(LS_OP_EQ, {left, b.constant(1000001.0)}));
    b.minimise(x);
    const ClosedModel model = b.close();
    const auto point = [](double level) { return Point{Value::ofDouble(level), Value::ofInt(3)}; };
    const auto tight = polished(model, model.domain, point(0.5), /*isProved=*/false);
    ASSERT_TRUE(tight);
    EXPECT_NEAR((*tight)[0].asDouble(), 1.0, 1e-9);
    EXPECT_EQ((*tight)[1].asInt(), 3);
    EXPECT_FALSE(polished(model, model.domain, point(1.0), /*isProved=*/false))
        << "nothing to gain";
}

struct PolishCase {
    const char* what;
    const char* text;
    std::vector<double> start;
    /// Ranges of the levels afterwards; none when the point is to stay.
    std::vector<Interval> result;
};

TEST(Polish, KeepsThePiecesOfConditionsAndRoundings) {
    const std::string two = "x: real 0.0 10.0; y: real 0.0 10.0;";
    const PolishCase cases[] = {
        {"a row is met without crossing a condition in the objective",
         "geq(sum(x,y),8.0); minimise sum(if(geq(x,3.0),prod(2.0,x),y),dist(y,4.0));",
         {2.99999, 5.000002},
         {{2.9999, 2.99999701}, {5.000003, 5.0001}}},
        {"a row is met without leaving a floor",
         "leq(sum(x,y),8.0); maximise floor(y);",
         {3.000007, 5.0},
         {{2.99999, 3.000000001}, {5.0, 5.0001}}},
        {"a row is met without leaving a rounding",
         "geq(sum(x,y),8.0); minimise round(y);",
         {2.499994, 5.4999999},
         {{2.49, 2.51}, {5.4, 5.49999999999}}},
        {"a row that cannot be met without a jump",
         "leq(x,4.999998); maximise floor(x);",
         {5.0, 0.0},
         {}},
        {"neither can a ceiling be left", "geq(x,5.000002); minimise ceil(x);", {5.0, 0.0}, {}},
        {"nor an element",
         "a = array(0.0,1.0,2.0); leq(x,1.999999); maximise at(a,x);",
         {2.0, 0.0},
         {}},
        {"an inequality inside holds without tolerance",
         "or(geq(x,3.0),geq(y,5.0)); minimise x;",
         {2.999998, 1.0},
         {{3.0, 3.00000001}, {1.0, 1.0}}},
        {"so does one that must not hold",
         "not(gt(sum(x,prod(3.0,y)),3.0)); maximise sum(x,y);",
         {3.000002, 0.0},
         {{2.99999, 3.0}, {0.0, 1e-9}}},
        {"an equation inside holds to the last bit",
         "or(eq(x,3.1),gt(x,9.0)); minimise y;",
         {3.100002, 0.0},
         {{3.1, 3.1}, {0.0, 0.0}}},
        {"what holds exactly stays", "or(geq(x,3.0),geq(y,5.0)); minimise x;", {3.0, 0.0}, {}},
    };
    for (const PolishCase& c : cases) {
        const ClosedModel model = testing::ModelText(two + c.text).model;
        const Point start{Value::ofDouble(c.start[0]), Value::ofDouble(c.start[1])};
        std::vector<Value> values;
        ASSERT_TRUE(judge(model, start, values).feasible) << c.what;
        const auto point = polished(model, model.domain, start, /*isProved=*/false);
        ASSERT_EQ(point.has_value(), !c.result.empty()) << c.what;
        for (std::size_t d = 0; d < c.result.size(); ++d) {
            EXPECT_GE((*point)[d].asDouble(), c.result[d].lower) << c.what;
            EXPECT_LE((*point)[d].asDouble(), c.result[d].upper) << c.what;
        }
    }
}

TEST(Polish, CostsAnOptimumNothingButExactness) {
    const auto isMoved = [](const char* text, double level) {
        const ClosedModel model = testing::ModelText(text).model;
        return polished(model, model.domain, {Value::ofDouble(level)}, /*isProved=*/true)
            .has_value();
    };
    EXPECT_FALSE(isMoved("x: real 0.0 9.0; geq(x,3.0); minimise x;", 2.999998));
    EXPECT_TRUE(isMoved("x: real 0.0 9.0; geq(x,3.0); minimise 1;", 2.999998));
    EXPECT_TRUE(isMoved("x: real 0.0 9.0; or(geq(x,3.0),gt(x,8.0)); minimise x;", 2.999998));
}

TEST(Searcher, MovesAStartIntoTheDomainAndBearsDegenerateModels) {
    ModelBuilder b;
    b.real(1.0, 2.0);
    b.integer(3.0, 3.0);
    const ClosedModel model = b.close();
    Searcher searcher(model, model.domain, {});
    searcher.startFrom({Value::ofDouble(std::nan("")), Value::ofInt(-50)});
    searcher.run(100, never);
    EXPECT_TRUE(searcher.best().verdict.feasible) << "no constraints, no objective";
    EXPECT_EQ(searcher.best().point[0].asDouble(), 1.0) << "nearest to 0";
    EXPECT_EQ(searcher.best().point[1].asInt(), 3);

    const ClosedModel empty = ModelBuilder().close();
    Searcher nothing(empty, {}, {});
    nothing.startFrom({});
    nothing.run(10, never);
    EXPECT_TRUE(nothing.best().verdict.feasible);
}

}  // namespace
}  // namespace engine
