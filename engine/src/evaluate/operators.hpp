#pragma once

#include <span>

#include "localsolver.h"
#include "model/closed_model.hpp"
#include "model/value.hpp"

namespace engine {

/// The meaning of every operator.
///
/// Integers stay integers in sum, sub, prod, max, min, abs, dist, mod and if; a result beyond 64
/// bits becomes a double. Relations and logic give integers 0 or 1; ceil, floor and round an
/// integer when it fits; div, sqrt, log, exp, pow, cos, sin, tan and scalarprod over doubles a
/// double. mod takes the dividend's sign.
///
/// Domain errors (division or mod by zero, log of 0 or less, root of a negative number, an index
/// outside its array, 0 to a negative power) and results beyond the doubles give NaN; only leaves
/// may be infinite. In a product an exact 0 makes 0 of an infinity and of 0 to a negative power.
/// NaN goes through everything but `and` with a false operand, `or` with a true one and the branch
/// of `if` that is not taken: the negation of a domain error is no way to a feasible point.

/// Value of operator expression `e` from the values of its operands.
///
/// @param e       neither a decision nor a constant, with as many operands as its operator asks.
/// @param values  [nbExpressions]; an array has no value of its own, its users read its operands.
Value computeValue(const ClosedModel& model, ExpressionIndex e, std::span<const Value> values);

/// One of the six relations; NaN when a side is NaN.
Value relate(ls_operator relation, Value left, Value right);

/// How far two sides may differ and still count as equal: 0 between integers and when a side is
/// infinite.
double toleranceBetween(Value left, Value right);

/// -1, 0 or 1 by numerical order, exact between integers; 0 when a side is NaN.
int compare(Value a, Value b);

Value subtract(Value a, Value b);
Value multiply(Value a, Value b);

}  // namespace engine
