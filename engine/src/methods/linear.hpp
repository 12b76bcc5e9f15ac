#pragma once

#include <memory>

#include "methods/method.hpp"

namespace engine {

/// Solve a linear model by the exact back end, objective by objective when there are several: the
/// one models without integers, the other those with them.
///
/// Points found are cleaned (integers rounded, the rest solved again for them), judged, and offered
/// to the incumbent. Optimal is claimed when the incumbent's objectives, as judged, equal the
/// proved bounds within polishTolerance, or nearer than two values of an all-integer objective can
/// be. Inconsistent is claimed for the rows relaxed by the judge's tolerance: with multipliers
/// checked here in safe arithmetic, or when the tree found no point; the tree's completeness, and
/// its bounds, are the back end's word.
std::unique_ptr<Method> makeSimplex(Ground& ground);
std::unique_ptr<Method> makeBranchAndCut(Ground& ground);

}  // namespace engine
