#include <gtest/gtest.h>

#include "engine/methods/run_methods.hpp"

namespace engine {
namespace {

using testing::MethodsRun;

struct OwnMeans : MethodsRun {
    explicit OwnMeans(
        const std::string& text, std::int64_t budget = plenty,
        std::function<bool()> shouldStop = [] { return false; })
        : MethodsRun(text, budget, std::move(shouldStop)) {
        runAll(/*withExactBackEnds=*/false);
    }
};

TEST(Methods, ClosesWhatPropagationDecides) {
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
        const OwnMeans run(c.text);
        EXPECT_EQ(run.conclusion.outcome, c.expected) << c.what;
        EXPECT_EQ(run.conclusion.proof, c.proof) << c.what;
    }
}

/// The outcome is what looking at every point says, down to the last objective.
void expectAgreesWithEnumeration(const std::string& text, testing::RandomModels& random) {
    const OwnMeans run(text);
    const ClosedModel& model = run.model.model;
    const Verdict best = testing::bestByEnumeration(model, random);
    ASSERT_EQ(run.conclusion.outcome, best.feasible ? Outcome::Optimal : Outcome::Inconsistent)
        << text;
    ASSERT_EQ(run.incumbent.hasPoint(), best.feasible) << text;
    if (!best.feasible) return;
    std::vector<Value> values;
    const Verdict found = judge(model, run.incumbent.point(), values);
    ASSERT_TRUE(found.feasible) << text;
    ASSERT_FALSE(isBetter(model, best, found)) << text;
}

TEST(Methods, EnumerationAgreesWithBruteForce) {
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

TEST(Methods, EnumerationObeysItsBudgetAndTheStop) {
    const std::string text = parityModel(15);
    const OwnMeans cut(text, 300'000);
    EXPECT_EQ(cut.conclusion.outcome, Outcome::Open);
    EXPECT_GE(cut.pace.spent(), 300'000);
    EXPECT_LT(cut.pace.spent(), 310'000);
    const OwnMeans whole(text);
    EXPECT_EQ(whole.conclusion.outcome, Outcome::Inconsistent);
    EXPECT_EQ(whole.conclusion.proof, "enumeration of all discrete points");
    int nbQuestions = 0;
    const OwnMeans stopped(text, OwnMeans::plenty, [&nbQuestions] { return ++nbQuestions >= 3; });
    EXPECT_EQ(stopped.conclusion.outcome, Outcome::Open);
    EXPECT_LT(stopped.pace.spent(), whole.pace.spent() / 10);
}

TEST(Methods, DecisionsThatNothingUsesKeepTheirStart) {
    MethodsRun run("free: real -5 5; x: int 0 3; y: int 0 3; geq(prod(x,y), 6); minimise x;");
    run.ground.start[0] = Value::ofDouble(2.5);
    run.runAll(/*withExactBackEnds=*/true);
    ASSERT_EQ(run.conclusion.outcome, Outcome::Optimal);
    EXPECT_EQ(run.incumbent.point()[0].asDouble(), 2.5);
    EXPECT_EQ(run.incumbent.point()[1].asInt(), 2);
}

}  // namespace
}  // namespace engine
