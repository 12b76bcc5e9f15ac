#include "back_ends/solve_locally.hpp"

#include <gtest/gtest.h>

#include "back_ends/nonlinear_back_end.hpp"
#include "engine/model_text.hpp"
#include "nonlinear/interior_point.hpp"

namespace engine {
namespace {

using testing::ModelText;
using Status = NonlinearAnswer::Status;
using LocalSolver = NonlinearAnswer (*)(LocalProblem&, const NonlinearSettings&);

/// The solvers of this build by name.
std::vector<std::pair<const char*, LocalSolver>> solvers() {
    std::vector<std::pair<const char*, LocalSolver>> all{{"interior point", solveByInteriorPoint}};
    if (!nonlinearBackEndName().empty()) all.emplace_back("back end", solveByBackEnd);
    return all;
}

NonlinearProblem problemOf(NonlinearProgram& program, const std::vector<double>& start) {
    NonlinearProblem problem{program, {}, {}, start};
    for (const Interval& i : program.model().domain) {
        problem.lower.push_back(i.lower);
        problem.upper.push_back(i.upper);
    }
    return problem;
}

struct Case {
    const char* text;
    std::vector<double> start;
    double best;  ///< of the objective, for minimising
};

const char* const rosenbrock =
    "x: real -9 9; y: real -9 9; r = sub(y, pow(x, 2)); d = sub(1.0, x);"
    "minimise sum(prod(100, r, r), pow(d, 2));";
const char* const fourDecisions =
    "a: real 1 5; b: real 1 5; c: real 1 5; d: real 1 5; geq(prod(a, b, c, d), 25.0);"
    "eq(sum(prod(a, a), prod(b, b), prod(c, c), prod(d, d)), 40.0);"
    "minimise sum(prod(a, d, sum(a, b, c)), c);";

TEST(SolveLocally, FindsKnownOptima) {
    const Case cases[] = {
        {rosenbrock, {-1.2, 1.0}, 0.0},
        {fourDecisions, {1, 5, 5, 1}, 17.0140173},
        {"x: real -1e10 1e10; y: real -1e10 1e10; eq(sum(pow(x, 2), pow(y, 2)), 4.0);"
         "eq(prod(x, y), 1.0); minimise x;",
         {-2, 0.1},
         -1.93185165},
        {"x: real 0 4; y: real 0 4; leq(sum(x, y), 3.0); leq(x, 2.0);"
         "minimise sum(prod(-1.0, x, y), x);",
         {1, 1},
         -1.0},
        {"x: real 0.01 9; y: real 0.01 9; minimise sum(prod(x, log(x)), exp(sub(y, x)), div(1.0, "
         "y));",
         {5, 2},
         2.0},
        {"x: real 0 1; eq(x, 0.25); minimise prod(-1.0, x);", {0.9}, -0.25},
        // More equations than decisions, all met by one point.
        {"x: real -9 9; y: real -9 9; eq(sum(x, y), 3.0); eq(sub(x, y), 1.0); eq(prod(x, y), 2.0);"
         "minimise x;",
         {5, 5},
         2.0},
    };
    for (const auto& [name, solver] : solvers()) {
        for (const Case& c : cases) {
            SCOPED_TRACE(std::string(name) + ": " + c.text);
            const ModelText built(c.text);
            NonlinearProgram program(built.model);
            LocalProblem problem(problemOf(program, c.start));
            BudgetPace pace(1'000'000, [] { return false; });
            const NonlinearAnswer answer = solver(problem, {pace});
            EXPECT_EQ(answer.status, Status::Optimal);
            ASSERT_EQ(answer.levels.size(), program.nbVariables());
            EXPECT_LE(answer.violation, 1e-7);
            program.moveTo(answer.levels);
            EXPECT_NEAR(program.valueOf(program.nbRows()), c.best, 1e-5);
        }
    }
}

}  // namespace
}  // namespace engine
