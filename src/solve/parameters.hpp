#pragma once

#include "translate/nlocalsolver.hpp"

namespace vex {

/// Hands threads, seed, annealing level, tick frequency and, when it is set, the dual bound to
/// LocalSolver, which refuses values out of its ranges by LSException.
void setParameters(const NorvLocalSolver& link);

/// Adds the one phase of the search with the host's time and iteration limits.
/// @return its index; the limits are read back through it after the solve.
int addLimitedPhase(const NorvLocalSolver& link);

}  // namespace vex
