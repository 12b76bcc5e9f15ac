#pragma once

#include <memory>

#include "methods/method.hpp"

namespace engine {

/// Solves a convex model with one objective or none by linear ones that are tightened where they
/// are wrong.
///
/// Tangents tie the curved columns to their expressions: cutting planes (Kelley, "The cutting-plane
/// method for solving convex programs", J. SIAM 8, 1960) solve the continuous problems, outer
/// approximation (Duran and Grossmann, "An outer-approximation algorithm for a class of
/// mixed-integer nonlinear programs", Math. Prog. 36, 1986) the mixed ones: the linear master gives
/// a bound and the integers, for which the rest is solved again. The tangents hold at every point
/// where the expressions are convex, so no master cuts off a feasible point. Tangents are taken
/// only where all parts of an expression lie inside their propagated ranges, since the curvature
/// may rest on them.
///
/// Optimal is claimed when the incumbent's objective, as judged, is within relationTolerance of the
/// proved bound, inconsistent as by the linear methods; both are the back end's word on linear
/// models.
std::unique_ptr<Method> makeOuterApproximation(Ground& ground);

}  // namespace engine
