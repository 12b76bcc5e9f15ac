#pragma once

#include <cstdint>
#include <vector>

#include "prove/propagator.hpp"

namespace engine {

enum class Curvature : std::uint8_t { Constant, Affine, Convex, Concave, Unknown };

/// What the composition rules of disciplined convex programming (Grant, Boyd and Ye, "Disciplined
/// convex programming", in: Global Optimization, 2006) tell about an expression, as a function of
/// decisions that move as real numbers within their domains, wherever it is defined. Beside the
/// rules, a sum of squares and products of decisions is convex when its matrix is positive
/// semidefinite.
struct CurvatureOfExpression {
    Curvature curvature = Curvature::Unknown;
    /// Seen on the sum as a whole only; its terms alone tell less.
    bool isWhole = false;
};

/// Curvatures of all expressions. O(operands), and cubic in the size of a quadratic form.
/// @param propagator  started without conflict: signs come from its ranges.
/// @param values      [nbExpressions] at any point: gives the values of constant expressions.
std::vector<CurvatureOfExpression> curvaturesOf(const ClosedModel& model,
                                                const Propagator& propagator,
                                                const std::vector<Value>& values);

}  // namespace engine
