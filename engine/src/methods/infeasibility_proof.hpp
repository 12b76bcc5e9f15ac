#pragma once

#include <functional>

#include "back_ends/exact_back_end.hpp"
#include "linear/farkas.hpp"

namespace engine {

/// Makes a proof of a back end's word that the rows of `model`, integrality aside, cannot be met
/// within `box`, each relaxed by its tolerance: multipliers that are checked here, in doubles
/// rounded outward and, where their rounding spoils the proof, in rationals.
///
/// When those at hand do not do, the smallest total violation of the rows is looked for, whose dual
/// values are such multipliers too, of even size, and exist whenever the rows contradict each
/// other: first without the bounds that are far, so that a proof that does not need them is not
/// spoilt by them.
///
/// @param multipliers  [nbRows] the back end's, or empty.
/// @param solve        asks the back end.
bool findInfeasibilityProof(const LinearModel& model, const Box& box,
                            std::span<const double> multipliers,
                            const std::function<ExactAnswer(const ExactProblem&)>& solve);

}  // namespace engine
