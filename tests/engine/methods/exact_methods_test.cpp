#include <gtest/gtest.h>

#include <csignal>
#include <optional>
#include <stdexcept>

#include "back_ends/exact_back_end.hpp"
#include "engine/methods/run_methods.hpp"
#include "linear/linear_view.hpp"
#include "methods/linear.hpp"
#include "methods/spatial.hpp"

namespace engine {
namespace {

using testing::MethodsRun;
using testing::ModelText;
using testing::startOf;

constexpr std::int64_t plenty = MethodsRun::plenty;

/// The methods over the exact back end, without those that would come before them.
struct Proving : MethodsRun {
    explicit Proving(
        const std::string& text, std::int64_t budget = plenty,
        std::function<bool()> shouldStop = [] { return false; })
        : MethodsRun(text, budget, std::move(shouldStop)) {
        if (!ground.propagator.start(model.model.domain, 1'000'000)) {
            conclusion = {Outcome::Inconsistent, "interval propagation"};
            return;
        }
        for (const auto make : {makeSimplex, makeBranchAndCut, makeSpatial}) {
            Stage stage;
            stage.push_back(make(ground));
            runStage(stage);
            // A second would find the linear model gone.
            if (stage.front()->reasonAgainst().empty()) return;
        }
    }
};

class ExactProofs : public ::testing::Test {
protected:
    void SetUp() override {
        if (!exactBackEndAbilities().integer) GTEST_SKIP() << "built without an exact back end";
    }
};

struct Case {
    const char* what;
    const char* text;
    Outcome outcome;
    std::vector<double> objectives;
};

constexpr Outcome optimal = Outcome::Optimal;
constexpr Outcome inconsistent = Outcome::Inconsistent;
constexpr Outcome open = Outcome::Open;

void check(const Case& c, double tolerance = 1e-9) {
    const Proving run(c.text);
    ASSERT_EQ(run.conclusion.outcome, c.outcome) << c.what;
    EXPECT_EQ(run.conclusion.proof.empty(), c.outcome == open) << c.what;
    ASSERT_EQ(run.incumbent.hasPoint(), !c.objectives.empty()) << c.what;
    for (std::size_t k = 0; k < c.objectives.size(); ++k) {
        EXPECT_NEAR(run.objective(k), c.objectives[k],
                    tolerance * (1.0 + std::fabs(c.objectives[k])))
            << c.what;
    }
}

TEST_F(ExactProofs, LinearPrograms) {
    const Case cases[] = {
        {"two products, three resources",
         "x: real 0 1e10; y: real 0 1e10; leq(x, 4.0); leq(prod(y,2.0), 12.0);"
         "leq(sum(prod(x,3.0),prod(y,2.0)), 18.0); maximise sum(prod(x,3.0),prod(y,5.0));",
         optimal,
         {36.0}},
        {"a blend with equality and constant",
         "x: real 0 1e10; y: real 0 1e10; z: real 0 1e10; eq(sum(x,y,z), 1.0);"
         "geq(sum(prod(x,0.3),prod(y,0.7)), 0.4); minimise sum(prod(x,2.0),prod(y,5.0),z,10.0);",
         optimal,
         {12.75}},
        {"free variables",
         "x: real -1e10 1e10; y: real -1e10 1e10; geq(sum(x,y), -4.0);"
         "leq(sub(x,y), 2.0); geq(sub(x,y), -2.0); minimise sum(prod(x,2.0),y);",
         optimal,
         {-7.0}},
        {"degenerate vertex",
         "x: real 0 1e10; y: real 0 1e10; leq(sum(x,y), 1.0); leq(x, 1.0);"
         "leq(sum(x,prod(y,2.0)), 1.0); leq(sum(prod(x,2.0),y), 2.0); maximise sum(x,prod(y,0.5));",
         optimal,
         {1.0}},
        {"unbounded but for the box",
         "x: real -1e10 1e10; y: real 0 5.0; leq(sub(y,x), 3.0);"
         "maximise sum(x,y);",
         optimal,
         {1e10 + 5.0}},
        {"infeasible by an odd cycle of rows",
         "x: real 0 1; y: real 0 1; z: real 0 1; leq(sum(x,y), 1.0); leq(sum(y,z), 1.0);"
         "leq(sum(x,z), 1.0); geq(sum(x,y,z), 1.6); minimise x;",
         inconsistent,
         {}},
        {"a function on both sides, nested and scaled",
         "x: real 0 10.0; y: real 0 10.0; leq(prod(2.0,sum(x,prod(y,3.0))), sub(30.0,x));"
         "geq(div(y,2.0), 1.0); maximise sub(x,prod(0.5,y));",
         optimal,
         {5.0}},
        {"several constraints in one",
         "x: real 0 9.0; and(leq(x, 4.0), geq(x, 1.0)); minimise x;",
         optimal,
         {1.0}},
        {"no objective, infeasible start",
         "x: real 0 9.0; y: real 0 9.0; geq(sum(x,y), 12.0);",
         optimal,
         {}},
        {"a cost beyond what the back end takes for a number",
         "x: real 0 9.0; y: real 0 9.0; geq(sum(x,y), 1.0); minimise sum(prod(x,1e25),y);",
         open,
         {}},
        {"a coefficient that the back end would drop, and that matters",
         "x: real 0 1e30; y: real 0 9.0; geq(sum(prod(x,1e-25),y), 20.0); minimise x;",
         open,
         {}},
        {"a side beyond what the back end takes for one, that no row reaches",
         "x: real 0 9.0; y: real 0 9.0; leq(sum(x,prod(y,4.0)), 1e25); maximise sum(x,y);",
         optimal,
         {18.0}},
        {"a strict relation between doubles", "x: real 0 9.0; gt(x, 1.0); minimise x;", open, {}},
    };
    for (const Case& c : cases) {
        if (std::string(c.what).starts_with("no objective")) {
            EXPECT_EQ(Proving(c.text).conclusion.outcome, optimal);
            EXPECT_TRUE(Proving(c.text).incumbent.hasPoint());
        } else {
            check(c);
        }
    }
}

TEST_F(ExactProofs, IntegerPrograms) {
    const Case cases[] = {
        {"a knapsack",
         "a: bool; b: bool; c: bool; d: bool;"
         "leq(sum(prod(a,5.0),prod(b,7.0),prod(c,4.0),prod(d,3.0)), 14.0);"
         "maximise sum(prod(a,8.0),prod(b,11.0),prod(c,6.0),prod(d,4.0));",
         optimal,
         {21.0}},
        {"general integers, fractional relaxation",
         "x: int 0 100; y: int 0 100; leq(sum(prod(x,5.0),prod(y,9.0)), 45.0); leq(sum(x,y), 6.0);"
         "maximise sum(prod(x,5.0),prod(y,8.0));",
         optimal,
         {40.0}},
        {"a fixed charge",
         "open: bool; x: real 0 40.0; leq(x, prod(open,40.0)); geq(x, 12.5);"
         "minimise sum(prod(open,100.0),prod(x,2.0));",
         optimal,
         {125.0}},
        {"semi-continuous: off is cheaper",
         "x: real 0 10.0; y: real 0 9.0;"
         "or(eq(x,0.0), geq(x,2.0)); geq(sum(x,y), 1.0); minimise sum(x,prod(y,1.5));",
         optimal,
         {1.5}},
        {"semi-continuous: on is needed",
         "x: real 0 10.0; y: real 0 0.25;"
         "or(eq(x,0.0), geq(x,2.0)); geq(sum(x,y), 1.0); minimise sum(x,prod(y,1.5));",
         optimal,
         {2.0}},
        {"products of booleans and of a boolean with a real",
         "a: bool; b: bool; x: real -3.0 5.0; leq(sum(prod(a,b),prod(a,a)), 1.0);"
         "maximise sum(prod(a,b,9.0),prod(a,x),b);",
         optimal,
         {5.0}},
        {"objectives by priority",
         "x: int 0 9; y: int 0 9; leq(sum(x,y), 10);"
         "maximise sum(prod(x,2),prod(y,2)); minimise x; maximise y;",
         optimal,
         {20.0, 1.0, 9.0}},
        {"integers within 1e10",
         "n: int -10000000000 10000000000; geq(prod(n,3.0), 10.0); minimise n;",
         optimal,
         {4.0}},
        {"no integer point in a thin plate",
         "x: int 0 9; y: int 0 9; z: int 0 9; eq(sum(prod(x,2),prod(y,2),prod(z,2)), 7); minimise "
         "x;",
         inconsistent,
         {}},
    };
    for (const Case& c : cases) check(c);
}

TEST_F(ExactProofs, NonlinearPrograms) {
    const Case cases[] = {
        {"a projection on a line",
         "x: real -9.0 9.0; y: real -9.0 9.0; leq(sum(x,y), 1.0);"
         "minimise sum(pow(sub(x,2.0),2),pow(sub(y,3.0),2));",
         optimal,
         {8.0}},
        {"a root whose derivative at the start is infinite",
         "x: real 0 9.0; maximise sub(sqrt(x),x);",
         optimal,
         {0.25}},
        {"a quotient, undefined at the start",
         "x: real 0 9.0; minimise sum(x,div(4.0,x));",
         optimal,
         {4.0}},
        {"a form that is convex as a whole",
         "x: real -9.0 9.0; y: real -9.0 9.0; geq(sum(x,y), 2.0);"
         "minimise sum(prod(x,x),prod(y,y),prod(x,y,-1.0));",
         optimal,
         {1.0}},
        {"integers and a switch",
         "n: int 0 9; on: bool; x: real 0 9.0; leq(x, prod(on,5.0)); geq(sum(n,log(sum(x,1.0))), "
         "3.5); minimise sum(pow(n,2),prod(on,2.0),x);",
         optimal,
         {6.0 + std::exp(1.5) - 1.0}},
        {"a disc and a line apart from it",
         "x: real -9.0 9.0; y: real -9.0 9.0; leq(sum(prod(x,x),prod(y,y)), 1.0);"
         "geq(sum(x,y), 1.5); minimise x;",
         inconsistent,
         {}},
        {"a form that is a saddle",
         "x: real 0 9.0; y: real 0 9.0; minimise sum(prod(x,x),prod(y,y),prod(x,y,-3.0));",
         optimal,
         {-81.0}},
        {"a product below a row",
         "x: real 0 9.0; y: real 0 9.0; geq(prod(x,y), 12.0); minimise x;",
         optimal,
         {12.0 / 9.0}},
        {"a cube of either sign", "x: real -2.0 2.0; minimise pow(x,3);", optimal, {-8.0}},
        {"outside of a disc",
         "x: real 0 9.0; geq(prod(x,x), 2.0); minimise x;",
         optimal,
         {std::sqrt(2.0)}},
        {"a valley with a bend",
         "x: real -9.0 9.0; y: real -9.0 9.0;"
         "minimise sum(prod(100.0,pow(sub(y,pow(x,2)),2)),pow(sub(1.0,x),2));",
         optimal,
         {0.0}},
        {"a circle and a hyperbola",
         "x: real -9.0 9.0; y: real -9.0 9.0; eq(sum(prod(x,x),prod(y,y)), 4.0);"
         "eq(prod(x,y), 1.0); minimise x;",
         optimal,
         {-std::sqrt(2.0 + std::sqrt(3.0))}},
        {"waves",
         "x: real -9.0 9.0; minimise sum(sin(x),prod(0.1,x));",
         optimal,
         {std::sin(-std::acos(-0.1) - 2.0 * std::acos(-1.0)) -
          0.1 * (std::acos(-0.1) + 2.0 * std::acos(-1.0))}},
        {"a branch whose power is undefined where it is not taken",
         "x: real -4.0 4.0; minimise if(leq(x,-1.0),pow(sum(x,3.0),2),"
         "sum(pow(max(sqrt(x),x),2),3.0));",
         optimal,
         {0.0}},
        {"a branch, a maximum, a distance and rounding",
         "x: real -4.0 4.0; n: int -4 4; geq(sum(floor(x),n), 3);"
         "minimise sum(if(leq(x,0.5),prod(x,x),prod(4.0,x)),max(n,x),dist(x,n));",
         optimal,
         {5.75}},
    };
    for (const Case& c : cases) check(c, 1e-6);
}

TEST_F(ExactProofs, AreNotRefutedByAnyPointOfARandomNonlinearModel) {
    testing::RandomModels random(11);
    int nbClaims = 0;
    for (int trial = 0; trial < 400; ++trial) {
        std::string text = random.decisions(/*withReals=*/true);
        for (int i = random.below(3); i > 0; --i) {
            text += (random.below(2) == 0 ? "leq(" : "geq(") + random.expression(2) + "," +
                    random.linear(false) + ");";
        }
        text += (random.below(2) == 0 ? "minimise " : "maximise ") + random.expression(2) + ";";
        const Proving run(text, 20'000'000);
        if (run.conclusion.outcome == open) continue;
        ++nbClaims;
        std::vector<Value> values;
        testing::forEachPoint(run.model.model, random, [&](const Point& point) {
            const Verdict verdict = judge(run.model.model, point, values);
            if (!verdict.feasible) return;
            ASSERT_EQ(run.conclusion.outcome, optimal) << text;
            const double value = verdict.objectives[0].asDouble();
            const double gain = run.model.model.objective[0].maximise ? value - run.objective()
                                                                      : run.objective() - value;
            ASSERT_FALSE(gain > 1e-5 * (1.0 + std::fabs(value))) << text << " " << value;
        });
        if (HasFatalFailure()) return;
    }
    EXPECT_GT(nbClaims, 80);
}

TEST_F(ExactProofs, DoNotCallInconsistentWhatTheTolerancePermits) {
    const std::string rows = "x: real 0 9; y: real 0 9; leq(sum(x,y), 3.0); geq(sum(x,y), ";
    const Proving permitted(rows + "3.0000008); minimise x;");
    EXPECT_EQ(permitted.conclusion.outcome, open);
    EXPECT_TRUE(permitted.incumbent.hasPoint());
    EXPECT_EQ(Proving(rows + "3.00001); minimise x;").conclusion.outcome, inconsistent);
}

/// Equations over unbounded variables that meet at a hidden point, and one that combines them but
/// for `offset` on its right-hand side: only all of them together contradict each other.
/// Multipliers from 1 to 1e5 leave rounding errors that bounds of 1e10 magnify beyond the offset.
std::string combinedEquations(testing::RandomModels& random, double offset) {
    const std::size_t nbColumns = 6 + static_cast<std::size_t>(random.below(10));
    std::string text;
    std::vector<double> last(nbColumns, 0.0);
    for (std::size_t j = 0; j < nbColumns; ++j) {
        text += "x" + std::to_string(j) + ": real -1e10 1e10;";
    }
    const auto row = [&](const char* relation, const std::vector<double>& entries, double side) {
        text.append(relation).append("(sum(");
        for (std::size_t j = 0; j < nbColumns; ++j) {
            text += "prod(x" + std::to_string(j) + "," + std::to_string(entries[j] / 1000.0) + "),";
        }
        text += "0.0)," + std::to_string(side) + ");";
    };
    double lastSide = offset;
    for (std::size_t i = 0; i + 1 < nbColumns; ++i) {
        std::vector<double> entries(nbColumns, 0.0);
        double side = 0.0;  // at the point (1, 2, 3, ...)
        const double multiplier = std::pow(10.0, random.below(6));
        for (std::size_t j = 0; j < nbColumns; ++j) {
            if (random.below(2) == 0) entries[j] = random.below(900) - 450;
            last[j] += multiplier * entries[j];
            side += entries[j] / 1000.0 * static_cast<double>(j + 1);
        }
        lastSide += multiplier * side;
        row("eq", entries, side);
    }
    row("leq", last, lastSide);
    return text + "minimise sum(x0,x1);";
}

TEST_F(ExactProofs, SeeContradictionsOfManyEquationsAndNoneWhereThereIsNone) {
    testing::RandomModels random(17);
    for (int trial = 0; trial < 60; ++trial) {
        const bool contradicts = trial % 2 == 0;
        const std::string text = combinedEquations(random, contradicts ? -5.0 : -1e-7);
        EXPECT_EQ(Proving(text).conclusion.outcome == inconsistent, contradicts) << text;
    }
}

TEST_F(ExactProofs, AgreeWithBruteForceOnRandomModels) {
    testing::RandomModels random(5);
    static const char* const relations[] = {"eq", "geq", "leq", "gt", "lt"};
    int nbClaims = 0;
    for (int trial = 0; trial < 120; ++trial) {
        std::string text = random.decisions(/*withReals=*/false) + "b: bool; c: bool; k: int 0 4;";
        const auto relation = [&](bool whole) {
            const std::string op = relations[random.below(whole ? 5 : 3)];
            return op + "(" + random.linear(whole) + "," + std::to_string(random.below(12) - 4) +
                   ")";
        };
        for (int i = 1 + random.below(2); i > 0; --i) text += relation(random.below(2) == 0) + ";";
        text += "or(" + relation(true) + "," + (random.below(2) == 0 ? "b" : "not(c)") + "," +
                relation(true) + ");";
        text += "leq(sum(prod(b,k,2),prod(b,c)," + random.name() + "), " +
                std::to_string(random.below(9)) + ");";
        text += "maximise sum(" + random.linear(false) + ",prod(c,k,b)); minimise ";
        text += random.linear(true) + ";";
        const Proving run(text);
        const Verdict best = testing::bestByEnumeration(run.model.model, random);
        ASSERT_TRUE(best.feasible || !run.incumbent.hasPoint()) << text;
        ASSERT_FALSE(best.feasible && run.conclusion.outcome == inconsistent) << text;
        if (run.conclusion.outcome == optimal) {
            ASSERT_TRUE(run.incumbent.hasPoint()) << text;
            ASSERT_FALSE(isBetter(run.model.model, best, run.incumbent.verdict())) << text;
        }
        nbClaims += run.conclusion.outcome == open ? 0 : 1;
    }
    EXPECT_GT(nbClaims, 110);
}

/// A subset-sum with n items that needs a tree.
std::string marketSplit(int nbItems, int nbRows) {
    testing::RandomModels random(3);
    std::string text;
    std::string cost;
    for (int j = 0; j < nbItems; ++j) text += "b" + std::to_string(j) + ": bool;";
    for (int i = 0; i < nbRows; ++i) {
        std::string row;
        int total = 0;
        for (int j = 0; j < nbItems; ++j) {
            const int c = random.below(100);
            total += c;
            row.append("prod(b").append(std::to_string(j)).append(",");
            row.append(std::to_string(c)).append(".0),");
        }
        const std::string s = "s" + std::to_string(i);
        const std::string t = "t" + std::to_string(i);
        text.append(s).append(": real 0 1e4;").append(t).append(": real 0 1e4;");
        text.append("eq(sum(").append(row).append(s).append(",prod(").append(t).append(",-1.0)), ");
        text.append(std::to_string(total / 2)).append(".0);");
        cost.append(s).append(",").append(t).append(",");
    }
    return text + "minimise sum(" + cost + "0.0);";
}

TEST_F(ExactProofs, BudgetEndsTheTreeTheSameWayEveryTime) {
    const std::string text = marketSplit(25, 3);
    constexpr std::int64_t budget = 4'000'000;
    const Proving first(text, budget);
    const Proving second(text, budget);
    EXPECT_EQ(first.conclusion.outcome, open);
    EXPECT_GE(first.pace.spent(), budget);
    EXPECT_LT(first.pace.spent(), 10 * budget);
    EXPECT_EQ(first.pace.spent(), second.pace.spent());
    ASSERT_TRUE(first.incumbent.hasPoint());
    EXPECT_EQ(first.objective(), second.objective());
    EXPECT_EQ(Proving(text, 0).pace.spent(), 0);
}

TEST_F(ExactProofs, StopEndsTheTreeAndExceptionsPassThrough) {
    const std::string text = marketSplit(40, 4);
    int nbQuestions = 0;
    const Proving stopped(text, plenty, [&nbQuestions] { return ++nbQuestions >= 5; });
    EXPECT_EQ(stopped.conclusion.outcome, open);
    EXPECT_GE(nbQuestions, 5);
    EXPECT_THROW(Proving(text, plenty,
                         [&nbQuestions]() -> bool {
                             if (++nbQuestions < 8) return false;
                             throw std::runtime_error("interrupted");
                         }),
                 std::runtime_error);
}

void handler(int) {}

TEST_F(ExactProofs, LeaveNoOutputAndNoHandlerBehind) {
    const auto before = std::signal(SIGINT, handler);
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    const Proving integer(marketSplit(10, 2));
    const Proving infeasible(
        "x: int 0 9; y: int 0 9; eq(sum(prod(x,2),prod(y,-2)), 1); minimise x;");
    const Proving unbounded("x: real -1e10 1e10; y: real 0 5.0; leq(sub(y,x), 3.0); maximise x;");
    std::fflush(nullptr);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(std::signal(SIGINT, before), handler);
    EXPECT_EQ(integer.conclusion.outcome, optimal);
}

TEST(ExactBackEnd, NamesItselfExactlyWhenItCanProve) {
    EXPECT_EQ(exactBackEndName().empty(), !exactBackEndAbilities().linear);
    EXPECT_EQ(backEndNames().find(exactBackEndName()), 0U);
}

TEST(LinearView, AgreesWithTheJudgeAtEveryPoint) {
    testing::RandomModels random(99);
    for (int trial = 0; trial < 300; ++trial) {
        std::string text = random.decisions(/*withReals=*/true);
        text += "and(geq(" + random.linear(false);
        text += "," + random.linear(false) + "), leq(prod(2,";
        text += random.linear(true) + "),sub(4," + random.name() + ")));";
        text += "minimise div(" + random.linear(true) + ",4);";
        const ModelText model(text);
        Propagator propagator(model.model);
        if (!propagator.start(model.model.domain, 100'000)) continue;
        std::vector<Value> values;
        judge(model.model, startOf(model.model), values);
        const std::optional<LinearModel> view = linearViewOf(model.model, propagator, values);
        ASSERT_TRUE(view) << text;
        testing::forEachPoint(model.model, random, [&](const Point& point) {
            const Verdict verdict = judge(model.model, point, values);
            bool holds = true;
            for (std::size_t i = 0; i < view->nbRows(); ++i) {
                double activity = 0.0;
                for (auto k = view->rowStart[i]; k < view->rowStart[i + 1]; ++k) {
                    const auto entry = static_cast<std::size_t>(k);
                    const auto d = view->decision[static_cast<std::size_t>(view->column[entry])];
                    activity +=
                        view->coefficient[entry] * point[static_cast<std::size_t>(d)].asDouble();
                }
                holds = holds && activity >= view->rowLower[i] - view->tolerance[i] &&
                        activity <= view->rowUpper[i] + view->tolerance[i];
            }
            ASSERT_EQ(holds, verdict.feasible) << text;
            const LinearForm& form = view->objective.front().form;
            double cost = form.constant;
            for (std::size_t k = 0; k < form.column.size(); ++k) {
                const auto d = view->decision[static_cast<std::size_t>(form.column[k])];
                cost += form.coefficient[k] * point[static_cast<std::size_t>(d)].asDouble();
            }
            ASSERT_NEAR(cost, verdict.objectives.front().asDouble(), 1e-9) << text;
        });
        if (HasFatalFailure()) return;
    }
}

}  // namespace
}  // namespace engine
