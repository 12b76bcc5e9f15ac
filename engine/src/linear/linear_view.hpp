#pragma once

#include <optional>

#include "evaluate/propagator.hpp"
#include "linear/linear_model.hpp"

namespace engine {

/// The linear model that says the same as `model`, or nothing when there is none.
///
/// Understood: sums, differences, products with constants, division by constants; products of
/// booleans with each other and with one bounded decision; negation of booleans; as constraints
/// and(), or() of these and of bounded linear relations (each alternative gets a binary column),
/// eq, geq, leq, and gt, lt between integers. Not understood: strict relations between doubles
/// and neq, whose solution sets are not closed.
///
/// When that does not do, convex expressions that are bounded from above and concave ones that are
/// bounded from below become columns of their own: the linear model is then a relaxation until cuts
/// tie those columns to their expressions.
///
/// @param propagator  started without conflict: its ranges become bounds, and the big
///                    multipliers of alternatives come from them.
/// @param values      [nbExpressions] at any point: gives the values of constant expressions.
/// O(operands) unless subexpressions are shared many times; gives up when that grows too large.
std::optional<LinearModel> linearViewOf(const ClosedModel& model, const Propagator& propagator,
                                        const std::vector<Value>& values);

/// How far the sides of a relation between doubles may miss it for the judge.
double toleranceOfRelation(const Propagator& propagator, ExpressionIndex left,
                           ExpressionIndex right);

}  // namespace engine
