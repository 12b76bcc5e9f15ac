#pragma once

#include <span>

#include "linear/farkas.hpp"

namespace engine {

/// As provesInfeasibility, for multipliers that a solver computed in doubles and whose rounding
/// spoils the proof: a combination that should cancel a column leaves 1e-13 of it, and a bound of
/// 1e10 turns that into 1e-3. The multipliers are repaired so that the combination cancels exactly,
/// and the outcome is checked in rational arithmetic. True is a proof.
///
/// The repair solves the columns that nearly cancel for some of the multipliers, exactly, and keeps
/// the others as they are: the basis chosen in doubles, its system solved in rationals (Applegate,
/// Cook, Dash, Espinoza, "Exact solutions to linear programming problems", Operations Research
/// Letters 35, 2007), with bounds that take what does not cancel (Neumaier and Shcherbina, "Safe
/// bounds in linear and mixed-integer linear programming", Mathematical Programming 99, 2004).
///
/// @param multipliers  [nbRows]. Work is limited, which gives false; false in a build without
///                     rational arithmetic.
bool provesInfeasibilityRationally(const LinearModel& model, const Box& box,
                                   std::span<const double> multipliers);

}  // namespace engine
