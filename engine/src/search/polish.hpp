#pragma once

#include <optional>
#include <vector>

#include "model/closed_model.hpp"

namespace engine {

/// Moves the floats of a feasible point as little as it takes, by a Restoration, for two ends:
///
/// - Relations inside expressions (conditions of `if`, operands of `or`) and the constraints that
///   they decide hold exactly, in doubles and without tolerance, so that who knows no tolerance
///   sees the same truth values.
/// - Constraints are met more tightly, at an optimum only where that costs nothing. A search for
/// better
///   objectives ends on the border of what the tolerance permits, and where sides are large that
///   is far from what the relations say; what the objective loses by it, it had from the tolerance.
///
/// Two ways are tried: to stay on the pieces of conditions and roundings that the point lies on,
/// and to follow the constraints alone. What either finds is taken only if every objective is worse
/// by no more than the way itself explains, its length times the objective's slope: a jump to
/// another piece is not explained by any tolerance.
///
/// @param domain    [nbDecisions], none empty; the floats stay inside.
/// @param isProved  the point is proved optimal.
/// @return the point, feasible, with fewer relations that hold by tolerance only, or as many and
///         less than a tenth of the excess; nothing when `point` meets its constraints within 1e-9
///         and the relations inside exactly, when no such point is found, or when the model is so
///         large that looking for it would take longer than a tick.
std::optional<Point> polished(const ClosedModel& model, const std::vector<Interval>& domain,
                              const Point& point, bool isProved);

}  // namespace engine
