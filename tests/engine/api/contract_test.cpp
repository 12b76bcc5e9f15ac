// Every function in every state: allowed where its declaration says so, refused elsewhere with the
// whole text, and nothing has changed then.

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "engine/api/solver_fixture.hpp"

namespace {

using namespace lstest;

constexpr const char* any = "modelling, running, closed, paused, solved";
constexpr const char* modelling = "modelling";
constexpr const char* notRunning = "modelling, closed, paused, solved";
constexpr const char* idle = "modelling, closed, solved";
constexpr const char* closedOrSolved = "closed, solved";
constexpr const char* withValues = "closed, paused, solved";

struct Call {
    const char* function;
    const char* allowed;
    std::function<void(ls_solver*)> call;
};

void noCallback(ls_solver*, int, void*) {}

// Expression 0 is an integer constant, 2 a decision, 6 a sum, of SmallModel.
const std::vector<Call>& calls() {
    static const std::vector<Call> table = {
        {"ls_get_state", any, [](ls_solver* s) { ls_get_state(s); }},
        {"ls_create_expression", modelling,
         [](ls_solver* s) { ls_create_expression(s, LS_OP_SUM); }},
        {"ls_create_int_constant", modelling, [](ls_solver* s) { ls_create_int_constant(s, 1); }},
        {"ls_create_double_constant", modelling,
         [](ls_solver* s) { ls_create_double_constant(s, 1.5); }},
        {"ls_expr_add_operand", modelling, [](ls_solver* s) { ls_expr_add_operand(s, 6, 0); }},
        {"ls_expr_set_name", notRunning, [](ls_solver* s) { ls_expr_set_name(s, 2, "again"); }},
        {"ls_expr_is_named", any, [](ls_solver* s) { ls_expr_is_named(s, 2); }},
        {"ls_expr_get_name", any, [](ls_solver* s) { ls_expr_get_name(s, 2, nullptr, 0); }},
        {"ls_expr_get_operator", any, [](ls_solver* s) { ls_expr_get_operator(s, 6); }},
        {"ls_expr_nb_operands", any, [](ls_solver* s) { ls_expr_nb_operands(s, 6); }},
        {"ls_expr_get_operand", any, [](ls_solver* s) { ls_expr_get_operand(s, 6, 1); }},
        {"ls_expr_is_decision", any, [](ls_solver* s) { ls_expr_is_decision(s, 6); }},
        {"ls_expr_is_double", any, [](ls_solver* s) { ls_expr_is_double(s, 2); }},
        {"ls_expr_is_double", "running, closed, paused, solved",
         [](ls_solver* s) { ls_expr_is_double(s, 6); }},
        {"ls_nb_expressions", any, [](ls_solver* s) { ls_nb_expressions(s); }},
        {"ls_expr_get_int_value", any, [](ls_solver* s) { ls_expr_get_int_value(s, 0); }},
        {"ls_expr_get_int_value", withValues, [](ls_solver* s) { ls_expr_get_int_value(s, 6); }},
        {"ls_expr_get_double_value", any, [](ls_solver* s) { ls_expr_get_double_value(s, 0); }},
        {"ls_expr_get_double_value", withValues,
         [](ls_solver* s) { ls_expr_get_double_value(s, 2); }},
        {"ls_expr_set_int_value", closedOrSolved,
         [](ls_solver* s) { ls_expr_set_int_value(s, 2, 3); }},
        {"ls_add_constraint", modelling, [](ls_solver* s) { ls_add_constraint(s, 6); }},
        {"ls_add_objective", modelling, [](ls_solver* s) { ls_add_objective(s, 6, LS_MINIMIZE); }},
        {"ls_nb_constraints", any, [](ls_solver* s) { ls_nb_constraints(s); }},
        {"ls_get_constraint", any, [](ls_solver* s) { ls_get_constraint(s, 0); }},
        {"ls_nb_objectives", any, [](ls_solver* s) { ls_nb_objectives(s); }},
        {"ls_get_objective", any, [](ls_solver* s) { ls_get_objective(s, 0); }},
        {"ls_get_objective_direction", any, [](ls_solver* s) { ls_get_objective_direction(s, 0); }},
        {"ls_close", modelling, [](ls_solver* s) { ls_close(s); }},
        {"ls_set_verbosity", idle, [](ls_solver* s) { ls_set_verbosity(s, 0); }},
        {"ls_set_nb_threads", idle, [](ls_solver* s) { ls_set_nb_threads(s, 1); }},
        {"ls_set_seed", idle, [](ls_solver* s) { ls_set_seed(s, 7); }},
        {"ls_set_annealing_level", idle, [](ls_solver* s) { ls_set_annealing_level(s, 9); }},
        {"ls_set_iteration_between_ticks", idle,
         [](ls_solver* s) { ls_set_iteration_between_ticks(s, 1); }},
        {"ls_set_time_between_ticks", idle, [](ls_solver* s) { ls_set_time_between_ticks(s, 1); }},
        {"ls_set_double_objective_threshold", idle,
         [](ls_solver* s) { ls_set_double_objective_threshold(s, 0, 100.0); }},
        {"ls_add_phase", closedOrSolved, [](ls_solver* s) { ls_add_phase(s); }},
        {"ls_save_environment", closedOrSolved,
         [](ls_solver* s) { ls_save_environment(s, "/dev/null"); }},
        {"ls_add_callback", idle,
         [](ls_solver* s) { ls_add_callback(s, LS_CALLBACK_PHASE_ENDED, &noCallback, nullptr); }},
        {"ls_solve", closedOrSolved, [](ls_solver* s) { ls_solve(s); }},
        {"ls_get_solution_status", withValues, [](ls_solver* s) { ls_get_solution_status(s); }},
        {"ls_stats_get_nb_iterations", notRunning,
         [](ls_solver* s) { ls_stats_get_nb_iterations(s); }},
        {"ls_stats_get_running_time", notRunning,
         [](ls_solver* s) { ls_stats_get_running_time(s); }},
        {"ls_stats_info", notRunning, [](ls_solver* s) { ls_stats_info(s, nullptr, 0); }},
        {"ls_solver_info", notRunning, [](ls_solver* s) { ls_solver_info(s, nullptr, 0); }},
        {"ls_solver_to_string", notRunning,
         [](ls_solver* s) { ls_solver_to_string(s, nullptr, 0); }},
        // These two end a solve, so they come last.
        {"ls_stop", any, [](ls_solver* s) { ls_stop(s); }},
        {"ls_interrupt", "running, paused", [](ls_solver* s) { ls_interrupt(s, ""); }},
    };
    return table;
}

bool contains(const std::string& list, const std::string& state) {
    return (", " + list + ",").find(", " + state + ",") != std::string::npos;
}

void expectContract(const Call& c, ls_solver* s, const std::string& state, RecordingHook& hook) {
    SCOPED_TRACE(std::string(c.function) + " in the state " + state);
    hook.take();
    c.call(s);
    const Refused refused = hook.take();
    if (contains(c.allowed, state)) {
        EXPECT_EQ(refused.code, -1) << refused.text;
        return;
    }
    EXPECT_EQ(refused.code, LS_ERROR_STATE);
    EXPECT_EQ(refused.function, c.function);
    EXPECT_EQ(refused.text, "not allowed in the state " + state + ", only in: " + c.allowed);
    EXPECT_EQ(refused.file.find('/'), std::string::npos);
    EXPECT_GT(refused.line, 0);
}

SolverHandle openSolver() {
    SolverHandle s = makeSolver();
    const SmallModel model(s.get());
    ls_expr_set_name(s.get(), model.x, "x");
    ls_set_nb_threads(s.get(), 1);
    return s;
}

TEST(Contract, EveryFunctionKeepsToItsStatesWhenNothingRuns) {
    RecordingHook hook;
    for (const Call& c : calls()) {
        const SolverHandle open = openSolver();
        expectContract(c, open.get(), "modelling", hook);
        const SolverHandle closed = openSolver();
        closeWithLimits(closed.get(), 0, 0);
        expectContract(c, closed.get(), "closed", hook);
        const SolverHandle solved = openSolver();
        closeWithLimits(solved.get(), 0, 0);
        ls_solve(solved.get());
        expectContract(c, solved.get(), "solved", hook);
    }
}

TEST(Contract, EveryFunctionKeepsToItsStatesInsideACallback) {
    RecordingHook hook;
    for (const Call& c : calls()) {
        const SolverHandle s = openSolver();
        closeWithLimits(s.get(), 0, 0);
        std::pair<const Call*, RecordingHook*> data{&c, &hook};
        ls_add_callback(
            s.get(), LS_CALLBACK_PHASE_STARTED,
            [](ls_solver* solver, int, void* userData) {
                const auto& [call, recorder] = *static_cast<decltype(data)*>(userData);
                EXPECT_EQ(ls_get_state(solver), LS_STATE_PAUSED);
                expectContract(*call, solver, "paused", *recorder);
                ls_delete_solver(solver);  // refused: it is in use
                EXPECT_EQ(recorder->take().code, LS_ERROR_STATE);
            },
            &data);
        ls_solve(s.get());
        EXPECT_EQ(ls_get_state(s.get()), LS_STATE_SOLVED);
    }
}

TEST(Contract, EveryFunctionKeepsToItsStatesWhileAnotherThreadSolves) {
    RecordingHook hook;
    const SolverHandle s = makeSolver();
    const SmallModel model(s.get());
    ls_expr_set_name(s.get(), model.x, "x");
    const EndlessModel endless(s.get());
    ls_set_nb_threads(s.get(), 1);
    ls_set_time_between_ticks(s.get(), 1000);
    closeWithLimits(s.get(), 100, INT64_MAX);
    std::thread solving([&] { ls_solve(s.get()); });
    while (ls_get_state(s.get()) != LS_STATE_RUNNING) std::this_thread::yield();
    for (const Call& c : calls()) {
        if (std::string(c.function) != "ls_interrupt") expectContract(c, s.get(), "running", hook);
    }
    solving.join();  // the table has called ls_stop
    EXPECT_EQ(ls_get_state(s.get()), LS_STATE_SOLVED);
}

struct BadArgument {
    const char* what;
    std::function<void(ls_solver*)> call;
    int code;
    const char* text;
};

TEST(Contract, ArgumentsAreRefusedWithTheirRange) {
    // On a closed SmallModel with one phase: 12 expressions, 2 is a decision, 6 a sum.
    const std::vector<BadArgument> cases = {
        {"no solver", [](ls_solver*) { ls_nb_expressions(nullptr); }, 3, "the solver is null"},
        {"expression too large", [](ls_solver* s) { ls_expr_is_named(s, 12); }, 3,
         "expression 12 does not exist, the model has 12 expressions, counted from 0"},
        {"no expression", [](ls_solver* s) { ls_expr_nb_operands(s, -1); }, 3,
         "expression -1 does not exist, the model has 12 expressions, counted from 0"},
        {"operand position", [](ls_solver* s) { ls_expr_get_operand(s, 6, 2); }, 3,
         "position 2 does not exist, there are 2 operands, counted from 0"},
        {"constraint position", [](ls_solver* s) { ls_get_constraint(s, 1); }, 3,
         "position 1 does not exist, there are 1 constraints, counted from 0"},
        {"objective position", [](ls_solver* s) { ls_get_objective_direction(s, -1); }, 3,
         "position -1 does not exist, there are 1 objectives, counted from 0"},
        {"threshold position", [](ls_solver* s) { ls_set_double_objective_threshold(s, 1, 0.0); },
         3, "position 1 does not exist, there are 1 objectives, counted from 0"},
        {"threshold",
         [](ls_solver* s) { ls_set_double_objective_threshold(s, 0, std::stod("nan")); }, 7,
         "NaN given, a number is needed"},
        {"phase", [](ls_solver* s) { ls_phase_get_time_limit(s, 1); }, 3,
         "position 1 does not exist, there are 1 phases, counted from 0"},
        {"time limit", [](ls_solver* s) { ls_phase_set_time_limit(s, 0, -1); }, 3,
         "time limit -1 is out of range, allowed are 0 to 2147483647"},
        {"iteration limit", [](ls_solver* s) { ls_phase_set_iteration_limit(s, 0, -5); }, 3,
         "iteration limit -5 is out of range, allowed are 0 to 9223372036854775807"},
        {"threads", [](ls_solver* s) { ls_set_nb_threads(s, 1025); }, 3,
         "number of threads 1025 is out of range, allowed are 0 to 1024"},
        {"seed", [](ls_solver* s) { ls_set_seed(s, -1); }, 3,
         "seed -1 is out of range, allowed are 0 to 2147483647"},
        {"annealing level", [](ls_solver* s) { ls_set_annealing_level(s, 10); }, 3,
         "annealing level 10 is out of range, allowed are 0 to 9"},
        {"iterations between ticks", [](ls_solver* s) { ls_set_iteration_between_ticks(s, 0); }, 3,
         "iterations between ticks 0 is out of range, allowed are 1 to 9223372036854775807"},
        {"seconds between ticks", [](ls_solver* s) { ls_set_time_between_ticks(s, 0); }, 3,
         "seconds between ticks 0 is out of range, allowed are 1 to 2147483647"},
        {"verbosity", [](ls_solver* s) { ls_set_verbosity(s, 2); }, 3,
         "verbosity 2 is out of range, allowed are 0 to 1"},
        {"callback type", [](ls_solver* s) { ls_add_callback(s, 5, &noCallback, nullptr); }, 3,
         "callback type 5 does not exist, allowed are 0 to 4"},
        {"callback", [](ls_solver* s) { ls_add_callback(s, 0, nullptr, nullptr); }, 3,
         "the callback is null"},
        {"value of a constraint", [](ls_solver* s) { ls_expr_set_int_value(s, 6, 1); }, 3,
         "expression 6 (sum) is no decision, only decisions take values"},
        {"double value", [](ls_solver* s) { ls_expr_set_double_value(s, 2, 1.0); }, 7,
         "decision 2 is an integer, it takes an integer value"},
        {"name", [](ls_solver* s) { ls_expr_get_name(s, 6, nullptr, 0); }, 3,
         "expression 6 has no name"},
        {"null name", [](ls_solver* s) { ls_expr_set_name(s, 6, nullptr); }, 3, "the name is null"},
        {"buffer length", [](ls_solver*) { ls_info(nullptr, -1); }, 3,
         "buffer length -1 is negative, allowed are 0 and more"},
        {"no buffer", [](ls_solver*) { ls_info(nullptr, 1); }, 3, "the text buffer is null"},
        {"file", [](ls_solver* s) { ls_save_environment(s, "no-such-folder/file"); }, 5,
         "cannot write \"no-such-folder/file\": No such file or directory"},
    };
    RecordingHook hook;
    const SolverHandle s = openSolver();
    closeWithLimits(s.get(), 0, 0);
    for (const BadArgument& c : cases) {
        c.call(s.get());
        const Refused refused = hook.take();
        EXPECT_EQ(refused.code, c.code) << c.what;
        EXPECT_EQ(refused.text, c.text) << c.what;
    }
}

TEST(Contract, TheHookMayThrowThroughEveryRefusingFunction) {
    struct Thrown {
        int code;
    };
    ls_set_exception_callback(
        [](int code, const char*, const char*, const char*, int, void*) { throw Thrown{code}; },
        nullptr);
    int nbThrown = 0;
    for (const Call& c : calls()) {
        try {
            c.call(nullptr);
        } catch (const Thrown& thrown) {
            EXPECT_EQ(thrown.code, LS_ERROR_ARGUMENT) << c.function;
            ++nbThrown;
        }
    }
    EXPECT_EQ(nbThrown, static_cast<int>(calls().size()));
    ls_set_exception_callback(nullptr, nullptr);
    EXPECT_EQ(ls_create_expression(nullptr, 3), -1) << "without a hook the result is neutral";
}

}  // namespace
