#pragma once

#include <cstdint>

#include "translate/nlocalsolver.hpp"

/// From a closed model to statuses, levels and the objective line.
///
/// What lives here: the order of a solve, the optimizer's parameters, and the report to the host.
/// May use the host's operations, the translator, the maps of defined variables and the diagnostic
/// outputs. Called by the entry points on the host's thread; owns nothing.

namespace vex {

/// Solves the instance of `link` and reports the outcome to the host's model object.
///
/// Does nothing when no model is closed: the statuses then tell already what went wrong.
/// LocalSolver's errors and the link's own end in the log and in the statuses; other standard
/// exceptions pass through.
/// @return 0 when the statuses are written (here or before), nonzero when the call failed.
std::int32_t runSolveDriver(NorvLocalSolver& link);

}  // namespace vex
