#pragma once

#include <atomic>
#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "control/method_choice.hpp"
#include "control/parameters.hpp"
#include "control/solution.hpp"
#include "control/statistics.hpp"
#include "control/stop_signal.hpp"
#include "evaluate/propagator.hpp"
#include "model/model.hpp"

namespace engine {

/// A registered callback.
struct CallbackEntry {
    ls_callback_type type;
    ls_callback function;
    void* userData;
};

/// How a solve ended when it did not simply end.
struct SolveEnding {
    std::exception_ptr callbackException;      ///< thrown by a callback, to be passed on as it is
    std::optional<std::string> interruptText;  ///< of ls_interrupt
};

/// All that stands behind one ls_solver: the core of the interface, without contract checks.
///
/// Callers check states and arguments. States: modelling until close(), closed until solve(),
/// running inside it, paused while callbacks run, solved afterwards. One thread at a time; state()
/// and stopSignal from any.
class Solver {
public:
    Model model;
    Parameters parameters;
    std::vector<Phase> phases;
    std::vector<CallbackEntry> callbacks;
    Statistics statistics;
    StopSignal stopSignal;
    /// Of the last solve.
    std::vector<MethodChoice> methodChoices;

    [[nodiscard]] ls_state state() const { return state_; }

    /// Freezes the model, which stays open when it is ill-formed (Refusal), and looks for a quick
    /// proof that it is inconsistent.
    void close();

    /// The current best point; from close() on.
    [[nodiscard]] Solution& solution();

    /// Runs the phases. Callbacks receive `handle`. Afterwards the state is solved, also when an
    /// exception of the engine itself leaves.
    SolveEnding solve(ls_solver* handle);

private:
    void emit(ls_callback_type type, ls_solver* handle, SolveEnding& ending);

    std::atomic<ls_state> state_{LS_STATE_MODELING};
    std::optional<Solution> solution_;
    std::optional<Propagator> root_;  ///< as close() left it, for every solve
};

}  // namespace engine
