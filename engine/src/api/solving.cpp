#include <algorithm>
#include <limits>

#include "api/contract.hpp"
#include "control/description.hpp"

using namespace engine;
using namespace engine::contract;

void ls_add_callback(ls_solver* solver, int type, ls_callback callback, void* user_data) {
    guarded(__func__, [&] {
        Solver& s = requireState(solver, notDuringSolve);
        requireChoice("callback type", type, LS_CALLBACK_PHASE_STARTED,
                      LS_CALLBACK_ITERATION_TICKED);
        requireGiven("callback", callback != nullptr);
        s.callbacks.push_back({static_cast<ls_callback_type>(type), callback, user_data});
    });
}

void ls_solve(ls_solver* solver) {
    SolveEnding ending;
    guarded(__func__, [&] {
        Solver& s = requireState(solver, closedOrSolved);
        if (s.phases.empty()) {
            throw Refusal(LS_ERROR_ARGUMENT, "there is no phase, at least one is needed");
        }
        ending = s.solve(solver);
        if (ending.interruptText && !ending.callbackException) {
            throw Refusal(LS_ERROR_INTERRUPTED, *ending.interruptText);
        }
    });
    // A callback's own exception is no error of the engine: it passes as it is.
    if (ending.callbackException) std::rethrow_exception(ending.callbackException);
}

void ls_stop(ls_solver* solver) {
    guarded(__func__, [&] { requireState(solver, anyState).stopSignal.stop(); });
}

void ls_interrupt(ls_solver* solver, const char* text) {
    guarded(__func__, [&] {
        Solver& s = requireState(solver, duringSolve);
        requireGiven("text", text != nullptr);
        s.stopSignal.interrupt(text);
    });
}

int ls_get_solution_status(ls_solver* solver) {
    return guarded(__func__, 0,
                   [&]() -> int { return requireState(solver, withValues).solution().status(); });
}

int64_t ls_stats_get_nb_iterations(ls_solver* solver) {
    return guarded(__func__, std::int64_t{0},
                   [&] { return requireState(solver, notRunning).statistics.iterations; });
}

int ls_stats_get_running_time(ls_solver* solver) {
    return guarded(__func__, 0, [&] {
        const std::int64_t seconds = requireState(solver, notRunning).statistics.seconds();
        return static_cast<int>(std::min<std::int64_t>(seconds, std::numeric_limits<int>::max()));
    });
}

int ls_stats_info(ls_solver* solver, char* text, int length) {
    return guarded(__func__, 0, [&] {
        return copyText(statisticsInfo(requireState(solver, notRunning)), text, length);
    });
}

int ls_solver_info(ls_solver* solver, char* text, int length) {
    return guarded(__func__, 0, [&] {
        return copyText(solverInfo(requireState(solver, notRunning)), text, length);
    });
}

int ls_solver_to_string(ls_solver* solver, char* text, int length) {
    return guarded(__func__, 0, [&] {
        return copyText(solverDescription(requireState(solver, notRunning)), text, length);
    });
}
