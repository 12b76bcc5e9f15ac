// The solve: limits, ticks and their order, stops from anywhere, reproducible results.

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

#include "engine/api/solver_fixture.hpp"

namespace {

using namespace lstest;

constexpr std::int64_t noLimit = INT64_MAX;

/// A callback made of a function object, which outlives the solve.
using OnEvent = std::function<void(ls_solver*, int type)>;

void listen(ls_solver* s, int type, OnEvent& onEvent) {
    ls_add_callback(
        s, type,
        [](ls_solver* solver, int t, void* data) { (*static_cast<OnEvent*>(data))(solver, t); },
        &onEvent);
}

TEST(Solve, EventsComeInOrderAndIterationTicksExactly) {
    const SolverHandle s = makeSolver();
    // Jumps alone: no proof, and nothing for derivatives.
    const int x = decision(s.get(), LS_OP_FLOAT, -1e3, 1e3);
    const int jumps = expression(s.get(), LS_OP_FLOOR, {x});
    ls_add_objective(s.get(), expression(s.get(), LS_OP_SUB, {jumps, x}), LS_MINIMIZE);
    ls_set_nb_threads(s.get(), 2);
    ls_set_iteration_between_ticks(s.get(), 70);
    closeWithLimits(s.get(), 1000, 200);
    ls_phase_set_iteration_limit(s.get(), ls_add_phase(s.get()), 81);
    std::string events;
    std::vector<std::int64_t> ticks;
    std::thread::id thread;
    OnEvent record = [&](ls_solver* solver, int type) {
        events += std::to_string(type);
        thread = std::this_thread::get_id();
        if (type == LS_CALLBACK_ITERATION_TICKED)
            ticks.push_back(ls_stats_get_nb_iterations(solver));
    };
    for (const int type : {4, 1, 0}) listen(s.get(), type, record);
    OnEvent second = [&](ls_solver*, int) { events += "'"; };
    listen(s.get(), LS_CALLBACK_PHASE_ENDED, second);
    ls_solve(s.get());
    EXPECT_EQ(ls_stats_get_nb_iterations(s.get()), 281);
    EXPECT_EQ(events,
              "0441'04"
              "41'");
    EXPECT_EQ(ticks, (std::vector<std::int64_t>{70, 140, 210, 280}));
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST(Solve, TimeTicksAtLeastOnceASecondAndATimeLimitIsReached) {
    const SolverHandle s = makeSolver();
    const EndlessModel model(s.get());
    ls_set_iteration_between_ticks(s.get(), noLimit);
    const int phase = closeWithLimits(s.get(), 2, noLimit);
    int nbTicks = 0;
    OnEvent tick = [&](ls_solver*, int) { ++nbTicks; };
    listen(s.get(), LS_CALLBACK_TIME_TICKED, tick);
    ls_solve(s.get());
    EXPECT_GE(nbTicks, 2);
    EXPECT_GE(ls_stats_get_running_time(s.get()), ls_phase_get_time_limit(s.get(), phase));
}

TEST(Solve, ALimitOfZeroStillJudgesTheStartingPoint) {
    for (const bool byTime : {true, false}) {
        const SolverHandle s = makeSolver();
        const SmallModel model(s.get());
        closeWithLimits(s.get(), byTime ? 0 : 100, byTime ? noLimit : 0);
        ls_expr_set_int_value(s.get(), model.x, 4);
        ls_solve(s.get());
        EXPECT_EQ(ls_get_solution_status(s.get()), LS_STATUS_FEASIBLE);
        EXPECT_EQ(ls_expr_get_int_value(s.get(), model.sum), 4);
        EXPECT_EQ(ls_stats_get_nb_iterations(s.get()), 0);
    }
}

TEST(Solve, ThresholdsEndTheSearchInAFeasiblePoint) {
    for (const double sign : {-1.0, 1.0}) {
        const SolverHandle s = makeSolver();
        const EndlessModel model(s.get(), /*maximises=*/sign > 0.0);
        constexpr std::int64_t many = 3'000'000;
        closeWithLimits(s.get(), 100, many);
        ls_set_double_objective_threshold(s.get(), 0, sign);
        ls_solve(s.get());
        EXPECT_EQ(ls_get_solution_status(s.get()), LS_STATUS_FEASIBLE);
        EXPECT_GE(sign * ls_expr_get_double_value(s.get(), model.objective), 1.0);
        EXPECT_LT(ls_stats_get_nb_iterations(s.get()), many);
        // The next solve goes on from the best point, which is good enough already.
        ls_solve(s.get());
        EXPECT_EQ(ls_stats_get_nb_iterations(s.get()), 0);
    }
}

TEST(Solve, EndsWithAPointWhoseConditionsHoldWithoutTolerance) {
    // x (2 + sin y) with x at least 3, or above 8: the search ends a tolerance below 3.
    const SolverHandle s = makeSolver();
    const int x = decision(s.get(), LS_OP_FLOAT, 0.0, 9.0);
    const int y = decision(s.get(), LS_OP_FLOAT, -9.0, 9.0);
    const int least = expression(s.get(), LS_OP_GEQ, {x, constant(s.get(), 3.0)});
    const int above = expression(s.get(), LS_OP_GT, {x, constant(s.get(), 8.0)});
    ls_add_constraint(s.get(), expression(s.get(), LS_OP_OR, {least, above}));
    const int wave =
        expression(s.get(), LS_OP_SUM, {constant(s.get(), 2), expression(s.get(), LS_OP_SIN, {y})});
    ls_add_objective(s.get(), expression(s.get(), LS_OP_PROD, {x, wave}), LS_MINIMIZE);
    closeWithLimits(s.get(), 100, 20'000);
    ls_solve(s.get());
    EXPECT_GE(ls_expr_get_double_value(s.get(), x), 3.0);
    EXPECT_LT(ls_expr_get_double_value(s.get(), x), 3.001);
}

TEST(Solve, EndsByItselfOnlyWithAProof) {
    const SolverHandle optimal = makeSolver();
    const SmallModel model(optimal.get());
    closeWithLimits(optimal.get(), 20, noLimit);
    ls_solve(optimal.get());
    EXPECT_EQ(ls_get_solution_status(optimal.get()), LS_STATUS_OPTIMAL);
    EXPECT_EQ(ls_expr_get_int_value(optimal.get(), model.sum), 12);
    ls_expr_set_int_value(optimal.get(), model.x, 0);
    EXPECT_EQ(ls_get_solution_status(optimal.get()), LS_STATUS_FEASIBLE) << "another point";

    const SolverHandle inconsistent = makeSolver();
    const SmallModel contradiction(inconsistent.get());
    const int row = expression(inconsistent.get(), LS_OP_GT,
                               {contradiction.sum, constant(inconsistent.get(), 12)});
    ls_add_constraint(inconsistent.get(), row);
    closeWithLimits(inconsistent.get(), 20, noLimit);
    ls_solve(inconsistent.get());
    EXPECT_EQ(ls_get_solution_status(inconsistent.get()), LS_STATUS_INCONSISTENT);
    EXPECT_EQ(ls_expr_get_int_value(inconsistent.get(), row) *
                  ls_expr_get_int_value(inconsistent.get(), contradiction.row),
              0);

    for (const bool hasObjective : {false, true}) {
        const SolverHandle free = makeSolver();
        const int x = decision(free.get(), LS_OP_FLOAT, -10.0, 10.0);
        const int wave = expression(free.get(), LS_OP_SIN, {x});
        ls_add_constraint(free.get(),
                          expression(free.get(), LS_OP_GEQ, {wave, constant(free.get(), 0.5)}));
        const int fixed = decision(free.get(), LS_OP_FLOAT, 0.3, 0.3);
        const int third = expression(free.get(), LS_OP_PROD, {fixed, constant(free.get(), 0.1)});
        if (hasObjective) ls_add_objective(free.get(), third, LS_MAXIMIZE);
        closeWithLimits(free.get(), 100, noLimit);
        ls_solve(free.get());
        EXPECT_EQ(ls_get_solution_status(free.get()), LS_STATUS_OPTIMAL) << "any feasible point is";
    }
}

TEST(Solve, APointWhoseObjectiveIsUndefinedIsNotFeasible) {
    struct Case {
        int kind;
        double upper;
        std::int64_t nbIterations;
        bool isFeasible;
    };
    for (const Case& c : {Case{LS_OP_FLOAT, 3.0, 500, false}, Case{LS_OP_INT, 3.0, 500, false},
                          Case{LS_OP_FLOAT, 9.0, 0, false}, Case{LS_OP_FLOAT, 9.0, 20'000, true},
                          Case{LS_OP_INT, 9.0, 20'000, true}}) {
        const SolverHandle s = makeSolver();
        const int bound = static_cast<int>(c.upper);
        const int x = c.kind == LS_OP_INT ? decision(s.get(), LS_OP_INT, 0, bound)
                                          : decision(s.get(), LS_OP_FLOAT, 0.0, c.upper);
        const int row = expression(s.get(), LS_OP_LEQ, {x, constant(s.get(), 20.0)});
        ls_add_constraint(s.get(), row);
        ls_add_objective(s.get(), x, LS_MINIMIZE);
        const int shifted = expression(s.get(), LS_OP_SUB, {x, constant(s.get(), 5)});
        ls_add_objective(s.get(), expression(s.get(), LS_OP_LOG, {shifted}), LS_MINIMIZE);
        closeWithLimits(s.get(), 100, c.nbIterations);
        ls_set_double_objective_threshold(s.get(), 0, -1.0);
        ls_solve(s.get());
        EXPECT_EQ(ls_get_solution_status(s.get()) >= LS_STATUS_FEASIBLE, c.isFeasible) << c.upper;
        EXPECT_EQ(ls_expr_get_int_value(s.get(), row), c.isFeasible ? 1 : 0) << c.upper;
    }
}

TEST(Solve, OneSeedOneResultWhateverTheClockDoes) {
    struct Case {
        int nbThreads;
        int seed;
    };
    std::vector<std::string> results;
    for (const Case c : {Case{1, 3}, Case{2, 3}, Case{3, 0}, Case{1, 4}}) {
        std::string first;
        for (int repeat = 0; repeat < 3; ++repeat) {
            const SolverHandle s = makeSolver();
            const EndlessModel model(s.get());
            ls_set_nb_threads(s.get(), c.nbThreads);
            ls_set_seed(s.get(), c.seed);
            closeWithLimits(s.get(), 1000, 2000);
            // Disturbs the schedule of the threads, not the result.
            OnEvent pause = [&](ls_solver*, int) {
                if (repeat == 1) std::this_thread::sleep_for(std::chrono::milliseconds(3));
            };
            listen(s.get(), LS_CALLBACK_ITERATION_TICKED, pause);
            ls_set_iteration_between_ticks(s.get(), 500);
            ls_solve(s.get());
            // Every accepted move counts: far more than the best point in the end.
            const std::string result =
                text([&](char* t, int n) { return ls_stats_info(s.get(), t, n); }) + ", best " +
                std::to_string(ls_expr_get_double_value(s.get(), model.objective));
            if (repeat == 0) first = result;
            EXPECT_EQ(result, first) << c.nbThreads << " threads";
        }
        results.push_back(first);
    }
    EXPECT_NE(results[0], results[3]) << "the seed matters";
    EXPECT_GT(std::stod(results[1]), 1.2 * std::stod(results[0]))
        << "moves side by side count once";
}

struct Stop {
    const char* what;
    int type;
    std::function<void(ls_solver*)> action;
    int code;
    const char* text;
};

TEST(Solve, CallbacksEndItCleanly) {
    const std::vector<Stop> cases = {
        {"stop at the start", 0, [](ls_solver* s) { ls_stop(s); }, -1, ""},
        {"stop twice at a tick", 4, [](ls_solver* s) { ls_stop(s), ls_stop(s); }, -1, ""},
        {"interrupt", 4, [](ls_solver* s) { ls_interrupt(s, "enough"); }, 6, "enough"},
        {"the first interrupt counts", 3,
         [](ls_solver* s) { ls_interrupt(s, "one"), ls_interrupt(s, "two"); }, 6, "one"},
    };
    RecordingHook hook;
    for (const Stop& c : cases) {
        const SolverHandle s = makeSolver();
        const EndlessModel model(s.get());
        ls_set_iteration_between_ticks(s.get(), 100);
        closeWithLimits(s.get(), 100, noLimit);
        ls_add_phase(s.get());
        OnEvent act = [&](ls_solver* solver, int) { c.action(solver); };
        listen(s.get(), c.type, act);
        int nbEnds = 0;
        OnEvent end = [&](ls_solver*, int) { ++nbEnds; };
        listen(s.get(), LS_CALLBACK_PHASE_ENDED, end);
        ls_solve(s.get());
        const Refused refused = hook.take();
        EXPECT_EQ(refused.code, c.code) << c.what;
        EXPECT_EQ(refused.text, c.text) << c.what;
        EXPECT_EQ(nbEnds, 1) << c.what;
        EXPECT_EQ(ls_get_state(s.get()), LS_STATE_SOLVED) << c.what;
        EXPECT_LT(ls_stats_get_running_time(s.get()), 50) << c.what;
        EXPECT_EQ(ls_get_solution_status(s.get()), LS_STATUS_FEASIBLE) << c.what;
    }
}

TEST(Solve, AnExceptionOfACallbackLeavesThroughIt) {
    const SolverHandle s = makeSolver();
    const EndlessModel model(s.get());
    ls_set_iteration_between_ticks(s.get(), 100);
    closeWithLimits(s.get(), 100, noLimit);
    OnEvent fail = [](ls_solver*, int) { throw std::out_of_range("mine"); };
    listen(s.get(), LS_CALLBACK_ITERATION_TICKED, fail);
    EXPECT_THROW(ls_solve(s.get()), std::out_of_range);
    EXPECT_EQ(ls_get_state(s.get()), LS_STATE_SOLVED);
}

TEST(Solve, AnyThreadMayStopIt) {
    const SolverHandle s = makeSolver();
    const EndlessModel model(s.get());
    ls_set_nb_threads(s.get(), 2);
    closeWithLimits(s.get(), 100, noLimit);
    for (int repeat = 0; repeat < 20; ++repeat) {
        std::thread other([&] {
            while (ls_get_state(s.get()) != LS_STATE_RUNNING) std::this_thread::yield();
            ls_stop(s.get());
        });
        ls_solve(s.get());
        other.join();
        EXPECT_LT(ls_stats_get_running_time(s.get()), 50);
    }
}

TEST(Solve, ValuesAndTextsAreReadableInEveryCallback) {
    RecordingHook hook;
    const SolverHandle s = makeSolver();
    const EndlessModel model(s.get());
    ls_set_iteration_between_ticks(s.get(), 500);
    closeWithLimits(s.get(), 100, 2000);
    OnEvent read = [&](ls_solver* solver, int) {
        EXPECT_GE(ls_get_solution_status(solver), LS_STATUS_FEASIBLE);
        const double value = ls_expr_get_double_value(solver, model.objective);
        const std::string info = text([&](char* t, int n) { return ls_solver_info(solver, t, n); });
        const std::size_t at = info.find("feasible, objective ");
        ASSERT_NE(at, std::string::npos) << info;
        EXPECT_EQ(std::stod(info.substr(at + 20)), value);
        EXPECT_NE(
            text([&](char* t, int n) { return ls_stats_info(solver, t, n); }).find(" moves, "),
            std::string::npos);
    };
    for (const int type : {0, 1, 3, 4}) listen(s.get(), type, read);
    ls_solve(s.get());
    EXPECT_EQ(hook.take().code, -1);
}

}  // namespace
