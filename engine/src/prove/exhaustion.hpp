#pragma once

#include <cstdint>

#include "prove/incumbent.hpp"
#include "prove/prepare.hpp"
#include "prove/propagator.hpp"

namespace engine {

/// Product of the sizes of the domains that matter, as propagation left them; infinity when a
/// float decision that matters is not fixed.
double sizeOfSpace(const ClosedModel& model, const Propagator& propagator);

/// Depth-first enumeration of all points of a discrete model, cut by propagation and by the
/// objectives' bounds against the incumbent (objectives compared lexicographically).
///
/// @param propagator  started without conflict; left as it was.
/// @param incumbent   receives every better point.
/// @param start       values of the decisions that nothing depends on.
/// @param nbNodes     in: the most nodes to visit; out: nodes visited.
/// @return true: the whole space was searched, the incumbent is optimal or, without one, there is
///         no feasible point. False: the budget ended, or `limits.shouldStop`.
bool exhaust(const ClosedModel& model, Propagator& propagator, ProvedIncumbent& incumbent,
             const Point& start, const ProveLimits& limits, std::int64_t& nbNodes);

/// Whether no point inside the propagator's ranges can be better than the incumbent.
bool cannotImprove(const ClosedModel& model, const Propagator& propagator,
                   const ProvedIncumbent& incumbent);

/// `value` in the form that decision `d` takes: an integer for booleans and integers.
Value valueFor(const ClosedModel& model, DecisionIndex d, double value);

}  // namespace engine
