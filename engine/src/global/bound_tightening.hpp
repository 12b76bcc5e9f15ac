#pragma once

#include <span>

#include "back_ends/simplex.hpp"
#include "evaluate/pace.hpp"
#include "global/relaxation.hpp"

namespace engine {

/// That the column lies in [lower, upper], said of its expression.
ValueLimit limitOf(const ColumnOrigin& origin, double lower, double upper);

/// Narrows the arguments of all definitions, each as far as the relaxation lets it go both ways,
/// and propagates what is found; as long as it pays (Gleixner et al., "Three enhancements for
/// optimization-based bound tightening", J. Global Optim. 67, 2017, section 3: columns whose bound
/// a solution has reached already are left out). Valid for every point that the judge accepts.
///
/// @param relaxation  refreshed; is so again afterwards.
/// @param cutoff      restrictions under which the bounds are sought, such as a better objective.
/// @return false: proved that no point is left.
bool tightenByOptimisation(Relaxation& relaxation, SimplexSolver& simplex, Pace& pace,
                           Propagator& propagator, std::int64_t propagationWork,
                           std::span<const ValueLimit> cutoff);

}  // namespace engine
