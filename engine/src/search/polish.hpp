#pragma once

#include <optional>
#include <vector>

#include "model/closed_model.hpp"

namespace engine {

/// A search for better objectives ends on the border of what the relations' tolerance permits, and
/// where sides are large that is far from what the relations say. This moves the floats of a
/// feasible point as little as it takes to meet them more tightly, by a Restoration; what the
/// objective loses by it, it had from the tolerance.
///
/// @param domain  [nbDecisions], none empty; the floats stay inside.
/// @return the point, feasible, with less than a tenth of the excess; nothing when `point` meets
///         its relations within 1e-9 already, when no such point is found, or when the model is so
///         large that looking for it would take longer than a tick.
std::optional<Point> polished(const ClosedModel& model, const std::vector<Interval>& domain,
                              const Point& point);

}  // namespace engine
