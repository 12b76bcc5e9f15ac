#pragma once

#include <memory>

#include "methods/method.hpp"

namespace engine {

/// Spaces up to the small size are enumerated at once; larger ones after the exact back ends, which
/// are much faster where they apply.
constexpr double smallSpace = 4096.0;
constexpr double largestSpace = 2e6;

/// Depth-first enumeration of all points of a discrete model, cut by propagation and by the
/// objectives' bounds against the incumbent (objectives compared lexicographically).
///
/// Branches on the ground's own propagator: runs alone in its stage.
/// @param largest  number of points that it takes on, after propagation.
std::unique_ptr<Method> makeEnumeration(Ground& ground, double largest);

/// Product of the sizes of the domains that matter, as propagation left them; infinity when a
/// float decision that matters is not fixed.
double sizeOfSpace(const ClosedModel& model, const Propagator& propagator);

/// Whether no point inside the propagator's ranges can be better than the incumbent.
bool cannotImprove(const ClosedModel& model, const Propagator& propagator,
                   const FeasibleIncumbent& incumbent);

}  // namespace engine
