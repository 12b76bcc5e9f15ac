#pragma once

#include <span>

#include "translate/nlocalsolver.hpp"

namespace vex {

/// The best point so far of a search that is paused, in the host's variables: what would be
/// reported if the search ended now. Levels of defined variables are recomputed; variables without
/// expression keep their levels. The model object stays as it is.
/// @param levels  [nmoN] of the model.
/// @return false when there is no feasible point, or no levels can be had; `levels` means nothing.
/// @throws LSException when the solver is not in a state that can be asked.
[[nodiscard]] bool readIncumbent(const NorvLocalSolver& link, std::span<double> levels);

}  // namespace vex
