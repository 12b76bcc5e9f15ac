#include "prove/prepare.hpp"

#include <gtest/gtest.h>

#include "engine/prove/random_models.hpp"

namespace engine {
namespace {

using Outcome = Preparation::Outcome;
using testing::ModelText;
using testing::startOf;

constexpr std::int64_t plenty = 10'000'000;

Preparation prepareWithoutBackEnd(const ClosedModel& model, std::int64_t iterations = plenty) {
    return prepare(model, startOf(model),
                   {iterations, 0, [] { return false; }, /*useExactBackEnd=*/false});
}

TEST(Prepare, ClosesWhatPropagationDecides) {
    const struct {
        const char* what;
        const char* text;
        Outcome expected;
        const char* proof;
    } cases[] = {
        {"no objective, feasible start", "x: real 0 9; leq(x, 3);", Outcome::Optimal,
         "no objective, and a feasible point"},
        {"the start is at the objective's bound", "x: real 0 9; minimise sum(x, 1);",
         Outcome::Optimal, "interval propagation"},
        {"the nearest point of the tightened domain is",
         "x: real 0 9; y: real 0 1; geq(x, 4); "
         "minimise prod(y, 1.0);",
         Outcome::Optimal, "interval propagation"},
        {"all decisions are fixed", "x: int 0 9; eq(x, 4); maximise prod(x, x);", Outcome::Optimal,
         "interval propagation"},
        {"the only point left is infeasible", "x: int 2 2; neq(mod(prod(x, x), 3), 1);",
         Outcome::Inconsistent, "interval propagation leaves a single point"},
        {"an empty domain", "x: int 3 2; minimise x;", Outcome::Inconsistent,
         "a decision has an empty domain"},
        {"a row out of reach", "x: int 0 2; geq(x, 3);", Outcome::Inconsistent,
         "interval propagation"},
        {"a continuous minimum inside", "x: real -2 9; minimise prod(sum(x,-1), sum(x,-1));",
         Outcome::Open, ""},
    };
    for (const auto& c : cases) {
        const ModelText text(c.text);
        const Preparation p = prepareWithoutBackEnd(text.model);
        EXPECT_EQ(p.outcome, c.expected) << c.what;
        EXPECT_EQ(p.proof, c.proof) << c.what;
    }
}

/// The outcome is what looking at every point says, down to the last objective.
void expectAgreesWithEnumeration(const std::string& text, testing::RandomModels& random) {
    const ModelText model(text);
    const Verdict best = testing::bestByEnumeration(model.model, random);
    const Preparation p = prepareWithoutBackEnd(model.model);
    ASSERT_EQ(p.outcome, best.feasible ? Outcome::Optimal : Outcome::Inconsistent) << text;
    ASSERT_EQ(p.hasPoint, best.feasible) << text;
    if (!best.feasible) return;
    std::vector<Value> values;
    const Verdict found = judge(model.model, p.point, values);
    ASSERT_TRUE(found.feasible) << text;
    ASSERT_FALSE(isBetter(model.model, best, found)) << text;
}

TEST(Prepare, EnumerationAgreesWithBruteForce) {
    testing::RandomModels random(11);
    for (int trial = 0; trial < 1000; ++trial) {
        std::string text = random.decisions(/*withReals=*/false);
        for (int i = random.below(3); i > 0; --i) text += random.expression(3) + ";";
        for (int k = 1 + random.below(2); k > 0; --k) {
            text += (random.below(2) == 0 ? "minimise " : "maximise ") + random.expression(3) + ";";
        }
        expectAgreesWithEnumeration(text, random);
        if (HasFatalFailure()) return;
    }
}

/// sum of n booleans equals `half`, which parity forbids; without pruning 2^n points.
std::string parityModel(int n) {
    std::string sum;
    std::string text;
    for (int j = 0; j < n; ++j) {
        text += "b" + std::to_string(j) + ": bool;";
        sum += "prod(b" + std::to_string(j) + ",2),";
    }
    return text + "eq(sum(" + sum + "), " + std::to_string(n % 4 == 0 ? n - 1 : n) +
           "); minimise b0;";
}

TEST(Prepare, EnumerationObeysItsBudgetAndTheStop) {
    const ModelText text(parityModel(15));
    const Preparation cut = prepareWithoutBackEnd(text.model, 100);
    EXPECT_EQ(cut.outcome, Outcome::Open);
    EXPECT_EQ(cut.iterations, 100);
    EXPECT_EQ(prepareWithoutBackEnd(text.model, 0).iterations, 0);
    const Preparation whole = prepareWithoutBackEnd(text.model);
    EXPECT_EQ(whole.outcome, Outcome::Inconsistent);
    EXPECT_EQ(whole.proof, "enumeration of all discrete points");
    int nbQuestions = 0;
    const auto stopAtThird = [&nbQuestions] { return ++nbQuestions >= 3; };
    const Preparation stopped = prepare(text.model, startOf(text.model),
                                        {plenty, 0, stopAtThird, /*useExactBackEnd=*/false});
    EXPECT_EQ(stopped.outcome, Outcome::Open);
    EXPECT_LT(stopped.iterations, 1000);
}

TEST(Prepare, DecisionsThatNothingUsesKeepTheirStart) {
    const ModelText text("free: real -5 5; x: int 0 3; y: int 0 3; geq(prod(x,y), 6); minimise x;");
    Point start = startOf(text.model);
    start[0] = Value::ofDouble(2.5);
    const Preparation p = prepare(text.model, start, {plenty, 0, [] { return false; }});
    ASSERT_EQ(p.outcome, Outcome::Optimal);
    EXPECT_EQ(p.point[0].asDouble(), 2.5);
    EXPECT_EQ(p.point[1].asInt(), 2);
}

}  // namespace
}  // namespace engine
