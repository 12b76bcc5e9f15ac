#include "control/solver.hpp"

#include <cstdio>
#include <new>

#include "control/description.hpp"
#include "control/solve_run.hpp"
#include "methods/propagation.hpp"
#include "model/extended_precision.hpp"

namespace engine {

namespace {

/// Up to this many operands the proof takes a small part of a second; larger models are propagated
/// when a solve begins, under its time limit.
constexpr std::size_t nbOperandsProvedAtClose = 200'000;

}  // namespace

void Solver::close() {
    const ExtendedPrecision precision;
    model.close();
    state_ = LS_STATE_CLOSED;
    if (model.closed().operand.size() > nbOperandsProvedAtClose) return;
    try {
        std::optional<Propagator> root = propagatedRoot(model.closed());
        root ? void(root_.emplace(*std::move(root))) : void(solution().proveInconsistent());
    } catch (const std::bad_alloc&) {
        // The proof is a bonus, the model is closed without it.
    }
}

Solution& Solver::solution() {
    if (!solution_) solution_.emplace(model.closed());
    return *solution_;
}

SolveEnding Solver::solve(ls_solver* handle) {
    struct SolvedAtEnd {
        std::atomic<ls_state>& state;
        ~SolvedAtEnd() { state = LS_STATE_SOLVED; }
    };
    SolveEnding ending;
    stopSignal.reset();
    statistics = {};
    methodChoices.clear();
    state_ = LS_STATE_RUNNING;
    const SolvedAtEnd solvedAtEnd{state_};
    const ExtendedPrecision precision;
    SolveRun run({model.sharedClosed(), root_ ? &*root_ : nullptr, parameters, phases, solution(),
                  statistics, methodChoices, stopSignal,
                  [&](ls_callback_type type) { emit(type, handle, ending); }});
    run.run();
    ending.interruptText = stopSignal.interruptText();
    return ending;
}

void Solver::emit(ls_callback_type type, ls_solver* handle, SolveEnding& ending) {
    if (ending.callbackException) return;
    state_ = LS_STATE_PAUSED;
    try {
        if (type == LS_CALLBACK_DISPLAY && parameters.verbosity > 0) {
            std::puts(solverInfo(*this).c_str());
        }
        for (const CallbackEntry& entry : callbacks) {
            if (entry.type == type) entry.function(handle, type, entry.userData);
        }
    } catch (...) {
        // Passed on when the workers rest and the state is consistent again.
        ending.callbackException = std::current_exception();
        stopSignal.stop();
    }
    state_ = LS_STATE_RUNNING;
}

}  // namespace engine
