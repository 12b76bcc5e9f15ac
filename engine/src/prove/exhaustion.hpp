#pragma once

#include <cstdint>

#include "prove/incumbent.hpp"
#include "prove/pace.hpp"
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
/// @param pace        a step is a node.
/// @param mostNodes   to visit.
/// @return true: the whole space was searched, the incumbent is optimal or, without one, there is
///         no feasible point. False: that were too many nodes, or the pace has ended.
bool exhaust(const ClosedModel& model, Propagator& propagator, ProvedIncumbent& incumbent,
             const Point& start, Pace& pace, std::int64_t mostNodes);

/// Whether no point inside the propagator's ranges can be better than the incumbent.
bool cannotImprove(const ClosedModel& model, const Propagator& propagator,
                   const ProvedIncumbent& incumbent);

/// `value` in the form that decision `d` takes: an integer for booleans and integers.
Value valueFor(const ClosedModel& model, DecisionIndex d, double value);

}  // namespace engine
