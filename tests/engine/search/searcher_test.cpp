#include "search/searcher.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <vector>

#include "engine/known_optima.hpp"
#include "engine/random_models.hpp"
#include "operators/random.hpp"
#include "search/polish.hpp"

namespace engine {
namespace {

using testing::ModelText;

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

TEST(Searcher, ReachesKnownOptimaFromTheLowerBounds) {
    for (const testing::KnownOptimum& known : testing::knownOptima()) {
        const ClosedModel model = ModelText(known.text).model;
        for (const std::uint64_t seed : {1U, 2U, 3U}) {
            const Incumbent best = search(model, lowerBounds(model), known.nbMoves, seed);
            ASSERT_TRUE(best.verdict.feasible) << known.what << ", seed " << seed;
            EXPECT_NEAR(best.verdict.objectives[0].asDouble(), known.optimum,
                        known.tolerance + 1e-5 * std::fabs(known.optimum))
                << known.what << ", seed " << seed;
            std::vector<Value> values;
            EXPECT_TRUE(judge(model, best.point, values).feasible) << known.what;
        }
    }
}

/// By its position in the list.
ClosedModel knownModel(std::size_t k) {
    return ModelText(testing::knownOptima().at(k).text).model;
}
const std::size_t knapsack = 0;
const std::size_t assignment = 1;
const std::size_t transport = 2;
const std::size_t mixedNonlinear = 4;

bool areSame(const Point& a, const Point& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](Value x, Value y) {
        return x.isInt() == y.isInt() && x.asDouble() == y.asDouble();
    });
}

TEST(Searcher, TheSameSeedGivesTheSamePointAndAnotherSeedAnother) {
    bool differs = false;
    for (const std::size_t k : {assignment, transport, mixedNonlinear}) {
        const ClosedModel model = knownModel(k);
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
    const ClosedModel model = knownModel(knapsack);
    Searcher searcher(model, model.domain, {});
    searcher.startFrom(lowerBounds(model));
    searcher.run(123, never);
    EXPECT_EQ(searcher.statistics().iterations, 123);
    const std::atomic<bool> stop{true};
    searcher.run(1000, stop);
    EXPECT_EQ(searcher.statistics().iterations, 123);
}

TEST(Searcher, AdoptsABetterPointOnlyAndGoesOnFromIt) {
    const ClosedModel model = knownModel(transport);
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

TEST(Searcher, StaysInsideADomainThatIsTightenedOnTheWay) {
    const ClosedModel model = ModelText(
                                  "x, y, z: real 0 9; n: int 0 9; x + y + z + n == 12;"
                                  "maximise x + 0.5*n;")
                                  .model;
    Searcher searcher(model, model.domain, {1, 1});
    searcher.startFrom(lowerBounds(model));
    searcher.tighten({{0, 4}, {-1, 5}, {2, 2}, {3, 3}});
    searcher.run(3000, never);
    const Incumbent& best = searcher.best();
    ASSERT_TRUE(best.verdict.feasible);
    EXPECT_NEAR(best.verdict.objectives[0].asDouble(), 5.5, 1e-5);
    EXPECT_EQ(best.point[2].asDouble(), 2.0);
    EXPECT_EQ(best.point[3].asInt(), 3);
}

TEST(Searcher, TakesObjectivesByPriority) {
    // x first; then y counts against 3y - x.
    const ClosedModel model =
        ModelText("x, y: int 0 8; x + y <= 10; maximise x; maximise 3.0*y + -1.0*x;").model;
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
        const ClosedModel model = ModelText(text).model;
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
    const ClosedModel model =
        ModelText("x: real 0 9; n: int 0 9; x^n + 1e6 == 1000001.0; minimise x;").model;
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
        const ClosedModel model = ModelText(two + c.text).model;
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
        const ClosedModel model = ModelText(text).model;
        return polished(model, model.domain, {Value::ofDouble(level)}, /*isProved=*/true)
            .has_value();
    };
    EXPECT_FALSE(isMoved("x: real 0.0 9.0; geq(x,3.0); minimise x;", 2.999998));
    EXPECT_TRUE(isMoved("x: real 0.0 9.0; geq(x,3.0); minimise 1;", 2.999998));
    EXPECT_TRUE(isMoved("x: real 0.0 9.0; or(geq(x,3.0),gt(x,8.0)); minimise x;", 2.999998));
}

TEST(Searcher, MovesAStartIntoTheDomainAndBearsDegenerateModels) {
    const ClosedModel model = ModelText("x: real 1 2; n: int 3 3;").model;
    Searcher searcher(model, model.domain, {});
    searcher.startFrom({Value::ofDouble(std::nan("")), Value::ofInt(-50)});
    searcher.run(100, never);
    EXPECT_TRUE(searcher.best().verdict.feasible) << "no constraints, no objective";
    EXPECT_EQ(searcher.best().point[0].asDouble(), 1.0) << "nearest to 0";
    EXPECT_EQ(searcher.best().point[1].asInt(), 3);

    const ClosedModel empty = ModelText("").model;
    Searcher nothing(empty, {}, {});
    nothing.startFrom({});
    nothing.run(10, never);
    EXPECT_TRUE(nothing.best().verdict.feasible);
}

}  // namespace
}  // namespace engine
