#pragma once

#include <span>

#include "model/closed_model.hpp"

namespace engine {

/// How far an expression is from being true and from being false, each 0 when it is so already.
/// One of the two is positive, both when the value is NaN; finite, at most `farAway`.
struct Distance {
    double toTrue = 0.0;
    double toFalse = 0.0;

    /// Positive: violated, negative: the slack. Linear across the border of a linear inequality.
    [[nodiscard]] double margin() const { return toTrue > 0.0 ? toTrue : -toFalse; }
};

constexpr double farAway = 1e12;

/// Distance of a relation from its sides, in units of `scale` (> 0).
Distance distanceOfRelation(ls_operator relation, Value left, Value right, double scale);

/// Distance of a number that stands where a truth value is expected.
Distance distanceOfNumber(Value v);

/// Is `op` one whose distance is composed from its operands' distances: not, and, or, xor, if?
bool isConnective(ls_operator op);
bool isRelation(ls_operator op);
/// The relation that holds exactly when `relation` does not.
ls_operator negated(ls_operator relation);

/// Distance of a connective from its operands' distances (Hansen and Jaumard's additive
/// conjunction, minimal disjunction; a branch of `if` costs the way to it and its own distance).
Distance distanceOfConnective(ls_operator op, std::span<const Distance> operands);

}  // namespace engine
