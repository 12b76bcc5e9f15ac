#pragma once

#include "localsolver.hpp"
#include "translate/nlocalsolver.hpp"

namespace vex {

/// What the link does at an event of the search: it stops the search when the host's user asks for
/// it, logs the solver's description at the start and a progress line at every iteration tick, and
/// feeds the solve trace at all other events. LocalSolver's errors pass through.
void handleSearchEvent(NorvLocalSolver& link, localsolver::LSCallbackType type);

/// The function that LocalSolver calls at every event of a search; `userData` is the link object
/// as an `LSCallback`. No exception leaves it: its text ends the search by `ls_interrupt`, and what
/// that throws itself is dropped.
void callbackDispatch(ls_solver* search, int type, void* userData) noexcept;

}  // namespace vex
