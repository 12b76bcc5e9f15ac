#pragma once

#include "translate/nlocalsolver.hpp"

namespace vex {

/// Reports a finished search to the host: why it stopped, statistics, levels, statuses, the
/// objective line. `phase` is the index of its phase.
/// @throws LSException when LocalSolver refuses to tell; what was reported before stays.
void reportResult(NorvLocalSolver& link, int phase);

/// A solved square system has a model status of its own, whatever the search called it.
void reportSquareSystem(ModelHandle nmo);

}  // namespace vex
