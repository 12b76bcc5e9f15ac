#pragma once

#include <vector>

#include "evaluate/propagator.hpp"
#include "operators/curvature.hpp"

namespace engine {

/// Curvatures of all expressions. O(operands), and cubic in the size of a quadratic form.
/// @param propagator  started without conflict: signs come from its ranges.
/// @param values      [nbExpressions] at any point: gives the values of constant expressions.
std::vector<CurvatureOfExpression> curvaturesOf(const ClosedModel& model,
                                                const Propagator& propagator,
                                                const std::vector<Value>& values);

}  // namespace engine
