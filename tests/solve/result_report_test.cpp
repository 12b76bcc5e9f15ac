#include "solve/result_report.hpp"

#include <gtest/gtest.h>

#include "host/operations.hpp"
#include "solve/solve_driver.hpp"
#include "translate/link_fixture.hpp"
#include "translate/recording_localsolver.hpp"

namespace {

constexpr const char* continuous = "cont x in 0 3 ; max x ; c1 : x <= 2";
constexpr const char* discrete = "int x in 0 3 ; max x ; c1 : x <= 2";
constexpr const char* clamped = "cont x in 0 inf ; max x ; c1 : x <= 2";
constexpr const char* square = "cont x in 0 3 ; max x ; c1 : x <= 2 ; square";
/// Its only row does not hold at the starting point.
constexpr const char* violated = "cont x in 0 3 ; max x ; c1 : x >= 2";

const std::vector<std::string> withDualBound = {"dualbound 5"};

struct Case {
    const char* what;
    const char* instance;
    int solutionStatus;
    std::int32_t modelStatus;
    const char* message;
    bool objectiveLine;
    std::vector<std::string> settings = {};
};

constexpr const char* inconsistent = "Model instance proven to be infeasible.\n\n";
constexpr const char* inconsistentWithin =
    "Model instance proven to be infeasible w.r.t. imposed variable bounds.\n\n";
constexpr const char* noPoint = "No feasible solution found.\n\n";
constexpr const char* notUsable =
    "Solution found by LocalSolver not feasible in original problem, reporting model status "
    "intermediate infeasible.\n";
constexpr const char* feasible = "Feasible solution found.\n";
constexpr const char* optimal = "Optimal solution found.\n";

const Case cases[] = {
    {"proved infeasible", continuous, 0, 4, inconsistent, false},
    {"proved infeasible, discrete", discrete, 0, 10, inconsistent, false},
    {"proved infeasible within clamped bounds", clamped, 0, 5, inconsistentWithin, false},
    {"proved infeasible below a dual bound", discrete, 0, 5, inconsistentWithin, false,
     withDualBound},
    {"no point", continuous, 1, 5, noPoint, false},
    {"no point, violated", violated, 1, 5, noPoint, false},
    {"a point that violates a row", violated, 2, 6, notUsable, true},
    {"a proved point that violates a row", violated, 3, 6, notUsable, true},
    {"a point", continuous, 2, 7, feasible, true},
    {"a point, discrete", discrete, 2, 8, feasible, true},
    {"proved optimal", continuous, 3, 1, optimal, true},
    {"proved optimal within clamped bounds", clamped, 3, 7, feasible, true},
    {"proved optimal, discrete, with a dual bound", discrete, 3, 8, feasible, true, withDualBound},
    {"a square system, solved", square, 3, 16, optimal, false},
    {"a square system with a point", square, 2, 16, feasible, false},
    {"a square system without a point", square, 1, 5, noPoint, false},
    {"a status of another day", continuous, 9, 13, "", false},
};

/// Runs the driver with the double in place of the search: the starting point is the result.
std::int32_t run(LinkFixture& fixture, int solutionStatus) {
    fixture.setUp();
    fixture.log.clear();
    fixture.model.setModelStatus(13);
    fixture.model.setSolveStatus(10);
    recording::answer("ls_solve", 0);
    recording::answer("ls_get_solution_status", solutionStatus);
    const std::int32_t result = vex::runSolveDriver(fixture.link);
    recording::reset();
    return result;
}

TEST(ResultReport, MapsTheSolutionStatus) {
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        LinkFixture fixture(c.instance, c.settings);
        recording::reset();
        EXPECT_EQ(run(fixture, c.solutionStatus), 0);
        EXPECT_EQ(fixture.model.modelStatus(), c.modelStatus);
        EXPECT_EQ(fixture.model.solveStatus(), 1);
        const char* line = "Objective Value:  0.00000000e+00\n";
        EXPECT_EQ(fixture.log, "\n" + std::string(c.message) + (c.objectiveLine ? line : ""));
    }
}

TEST(ResultReport, TellsWhyTheSearchStopped) {
    struct StopCase {
        const char* what;
        std::int64_t iterations;
        int seconds;
        std::int32_t solveStatus;
        const char* message;
    };
    const StopCase stops[] = {
        {"by itself", 9, 1, 1, "\n"},
        {"iterations reach their limit", 10, 1, 2, "\nStopped due to iteration limit.\n"},
        {"seconds reach their limit", 9, 2, 3, "\nStopped due to time limit.\n"},
        {"both", 11, 3, 2, "\nStopped due to iteration limit.\n"},
    };
    for (const StopCase& c : stops) {
        SCOPED_TRACE(c.what);
        LinkFixture fixture(continuous);
        fixture.environment.setIterationLimit(10);
        fixture.environment.setTimeLimit(2.9);
        recording::reset();
        recording::answer("ls_stats_get_nb_iterations", c.iterations);
        recording::answer("ls_stats_get_running_time", c.seconds);
        run(fixture, LS_STATUS_FEASIBLE);
        EXPECT_EQ(fixture.log.substr(0, fixture.log.find("Feasible")), c.message);
        EXPECT_EQ(fixture.model.solveStatus(), c.solveStatus);
        EXPECT_EQ(fixture.model.headAndTail(3), static_cast<double>(c.iterations));
        EXPECT_EQ(fixture.model.headAndTail(4), c.seconds);
        EXPECT_EQ(fixture.model.headAndTail(9), 0.0);
    }
}

TEST(ResultReport, PutsTheProofAboveTheLimitAndTheUserAboveAll) {
    LinkFixture fixture(continuous);
    fixture.environment.setTimeLimit(0.5);  // whole seconds: 0, reached at once
    recording::reset();
    recording::answer("ls_stats_get_running_time", 0);
    run(fixture, LS_STATUS_OPTIMAL);
    EXPECT_EQ(fixture.log.rfind("\nStopped due to time limit.\nOptimal solution found.\n", 0), 0U);
    EXPECT_EQ(fixture.model.solveStatus(), 1);

    fixture.setUp();
    const int phase = fixture.link.solver->addPhase();
    ls_phase_set_time_limit(fixture.link.solver->getHandle(), phase, 0);
    fixture.link.interrupted = true;
    fixture.log.clear();
    recording::answer("ls_get_solution_status", LS_STATUS_FEASIBLE);
    recording::answer("ls_stats_get_running_time", 5);
    vex::reportResult(fixture.link, phase);
    recording::reset();
    EXPECT_EQ(fixture.log.rfind("\nStopped due to user interrupt (Ctrl+C event).\n", 0), 0U);
    EXPECT_EQ(fixture.model.solveStatus(), 8);
}

TEST(ResultReport, NamesTheHostsObjectiveWhenThereAreSeveral) {
    LinkFixture fixture("cont x in 125 125 ; max x ; c1 : x >= 2");
    recording::reset();
    fixture.setUp();
    fixture.link.nbObjectives = 2;
    recording::answer("ls_solve", 0);
    recording::answer("ls_get_solution_status", LS_STATUS_FEASIBLE);
    vex::runSolveDriver(fixture.link);
    recording::reset();
    EXPECT_NE(
        fixture.log.find("Objective Value (NORV model objective function):  1.25000000e+02\n"),
        std::string::npos);
}

TEST(ResultReport, LeavesTheLevelOfAnUnusedVariable) {
    LinkFixture fixture("cont unused in 0 9 ; cont x in 4 4 ; max x");
    fixture.model.setLevel(0, 7.5);
    recording::reset();
    run(fixture, LS_STATUS_FEASIBLE);
    EXPECT_EQ(fixture.model.levels()[0], 7.5);
    EXPECT_EQ(fixture.model.levels()[1], 4.0);
}

TEST(ResultReport, RecomputesDefinedVariablesOrSaysThatItCannot) {
    using Evaluate =
        std::int32_t(vex::ModelHandle, std::int32_t, const double*, double*, std::int32_t*);
    const struct {
        Evaluate* evaluate;  // of the row without x; the search has 2 for it, and so 3 for x
        const char* log;
    } evaluations[] = {
        {[](auto, auto, auto, double* value, std::int32_t* nbErrors) {
             *value = 4.0;
             return *nbErrors = 0;
         },
         "\nOptimal solution found.\nObjective Value:  2.00000000e+00\n"},
        {[](auto, auto, auto, double*, std::int32_t* nbErrors) { return *nbErrors = 1; },
         "\nIssues evaluating aggregated variables.\nOptimal solution found.\n"
         "Objective Value:  3.00000000e+00\n"},
    };
    for (const auto& [evaluate, log] : evaluations) {
        LinkFixture fixture("cont x in 0 9 ; cont y in 2 2 ; min x ; def : 2 x + y = 8",
                            {"defvar x def"});
        recording::reset();
        const SlotOverride evaluation(vex::nmoEvalFunc, "nmoEvalFunc", evaluate);
        EXPECT_EQ(run(fixture, LS_STATUS_OPTIMAL), 0);
        EXPECT_EQ(fixture.log, log);
    }
}

TEST(ResultReport, ForgivesUnreadableLevelsOfAnUnusablePointOnly) {
    for (const char* instance : {violated, continuous}) {
        SCOPED_TRACE(instance);
        LinkFixture fixture(instance);
        recording::reset();
        fixture.setUp();
        fixture.log.clear();
        recording::answer("ls_solve", 0);
        recording::answer("ls_get_solution_status", LS_STATUS_FEASIBLE);
        recording::answer("ls_expr_is_double", 0);  // then an integer is asked of a double
        const bool usable = instance == continuous;
        EXPECT_EQ(vex::runSolveDriver(fixture.link), usable ? 1 : 0);
        EXPECT_EQ(fixture.model.modelStatus(), usable ? 13 : 6);
        EXPECT_EQ(fixture.model.solveStatus(), usable ? 10 : 1);
        recording::reset();
    }
}

}  // namespace
