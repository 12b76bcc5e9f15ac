#pragma once

#include "model/closed_model.hpp"

namespace engine {

/// The value of a decision's domain that is nearest to `wanted`; NaN counts as 0.
///
/// @param discrete  boolean or integer decision: the result is an integer Value, halves away from
///                  zero; otherwise a double Value.
/// An empty domain has no values; the result is then its lower bound, so that every decision
/// always has a readable value.
Value nearestValue(Value wanted, const Interval& domain, bool discrete);

/// `value` in the form that decision `d` takes: an integer, which `value` is then, for booleans and
/// integers.
Value valueFor(const ClosedModel& model, DecisionIndex d, double value);

/// Domain of a decision from its bound constants.
///
/// @param discrete  bounds are rounded inward to integers of the 64-bit range that a double holds
///                  exactly; an empty domain becomes [1, 0].
Interval domainFromBounds(Value lower, Value upper, bool discrete);

}  // namespace engine
