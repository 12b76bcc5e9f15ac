#pragma once

#include "operators/operator_row.hpp"

/// eq, neq, geq, leq, gt, lt: the columns once, for each of them.
namespace engine::comparisons {

/// Of the sides within the tolerance. @return NaN when a side is NaN.
inline Value relate(const Relation& relation, Value left, Value right) {
    if (isNan(left) || isNan(right)) return notANumber;
    int order = compare(left, right);
    if (order != 0 && !(left.isInt() && right.isInt())) {
        const double gap = std::fabs(left.asDouble() - right.asDouble());
        if (gap <= toleranceBetween(left, right)) order = 0;
    }
    return ofBool(relation.holds(order));
}

/// Distance to make `relation` hold, given that it does not.
inline double repair(const Relation& relation, Value left, Value right) {
    const double gap = left.asDouble() - right.asDouble();
    if (relation.isEquation()) return std::fabs(gap);
    const bool exact = left.isInt() && right.isInt();
    // Just outside the tolerance is where a strict relation starts to hold.
    const double strict = !relation.isStrict ? 0.0
                          : exact            ? 1.0
                                             : 2.0 * toleranceBetween(left, right);
    return relation.direction == 0 ? strict : strict - relation.direction * gap;
}

template <ls_operator op>
Value value(const ValueOperands& x) {
    return relate(relationOf(op), x[0], x[1]);
}

template <ls_operator op>
Distance distance(const DistanceOperands& x) {
    constexpr Relation relation = relationOf(op);
    const Value left = x[0];
    const Value right = x[1];
    const Value holds = relate(relation, left, right);
    if (!holds.isInt()) return {farAway, farAway};
    const auto away = [&](const Relation& wanted) {
        return boundedDistance(repair(wanted, left, right) / x.scale());
    };
    return holds.isTrue() ? Distance{0.0, away(negated(relation))} : Distance{away(relation), 0.0};
}

/// The truth of "a <= b".
inline Range atMost(const Range& a, const Range& b, bool exact) {
    return truth(/*canBeFalse=*/a.upper > b.lower,
                 /*canBeTrue=*/a.lower <= toleratedAbove(b.upper, exact), a.mayBeNan || b.mayBeNan);
}

inline Range equal(const Range& a, const Range& b, bool exact) {
    const bool same = a.isPoint() && b.isPoint() && a.lower == b.lower;
    const bool canMeet =
        a.lower <= toleratedAbove(b.upper, exact) && b.lower <= toleratedAbove(a.upper, exact);
    return truth(/*canBeFalse=*/!same, /*canBeTrue=*/canMeet, a.mayBeNan || b.mayBeNan);
}

template <ls_operator op>
Range image(const RangeOperands& x) {
    constexpr Relation relation = relationOf(op);
    const Range a = x[0];
    const Range b = x[1];
    const bool exact = x.areExactIntegers();
    if (relation.direction == 0) {
        return relation.isStrict ? negation(equal(a, b, exact)) : equal(a, b, exact);
    }
    // A strict relation is the negation of the opposite one.
    const bool isLeftAtMost = (relation.direction < 0) != relation.isStrict;
    const Range r = isLeftAtMost ? atMost(a, b, exact) : atMost(b, a, exact);
    return relation.isStrict ? negation(r) : r;
}

inline void narrowInOrder(const NarrowingStep& x, std::size_t smaller, std::size_t larger,
                          bool strict) {
    const bool exact = x.areExactIntegers();
    const double step = strict && exact ? 1.0 : 0.0;
    // A strict relation excludes at least what its non-strict opposite accepts without tolerance.
    const bool noTolerance = exact || strict;
    x.restrict(smaller, -infinity, toleratedAbove(x[larger].upper, noTolerance) - step);
    x.restrict(larger, toleratedBelow(x[smaller].lower, noTolerance) + step, infinity);
}

inline void narrowApart(const NarrowingStep& x) {
    numbersOnly(x);
    if (!x.areExactIntegers()) return;
    for (std::size_t k = 0; k < 2; ++k) {
        const Range other = x[1 - k];
        if (!other.isPoint()) continue;
        const Range mine = x[k];
        x.restrict(k, mine.lower == other.lower ? mine.lower + 1.0 : mine.lower,
                   mine.upper == other.upper ? mine.upper - 1.0 : mine.upper);
    }
}

template <ls_operator op>
void narrowing(const NarrowingStep& x) {
    const bool holds = x.own().mustBeTrue();
    if (!holds && !x.own().mustBeZero()) return numbersOnly(x);
    const Relation relation = holds ? relationOf(op) : negated(relationOf(op));
    if (relation.direction < 0) return narrowInOrder(x, 0, 1, relation.isStrict);
    if (relation.direction > 0) return narrowInOrder(x, 1, 0, relation.isStrict);
    if (relation.isStrict) return narrowApart(x);
    narrowInOrder(x, 0, 1, /*strict=*/false);
    narrowInOrder(x, 1, 0, /*strict=*/false);
}

template <ls_operator op>
MaybeStep inverse(const InverseOperands& x, const Goal& goal) {
    const Relation relation = goal.truth ? relationOf(op) : negated(relationOf(op));
    const Value left = x.value(0);
    const Value right = x.value(1);
    if (relate(relation, left, right).isTrue()) return std::nullopt;
    const bool moveLeft = x.movesFirst(x.indexOf(0), x.indexOf(1));

    int direction = relation.direction;
    if (direction == 0 && relation.isStrict) direction = x.random().chance(0.5) ? 1 : -1;
    if (!moveLeft) direction = -direction;
    double wanted = moveLeft ? right.asDouble() : left.asDouble();
    if (relation.isStrict) {
        const bool exact = left.isInt() && right.isInt();
        wanted += direction * (exact ? 1.0 : 2.0 * toleranceBetween(left, right));
    }
    return InverseStep{x.indexOf(moveLeft ? 0 : 1), Goal::ofNumber(wanted, direction)};
}

template <ls_operator op>
constexpr OperatorRow row{.op = op,
                          .logic = LogicForm::Relation,
                          .value = value<op>,
                          .distance = distance<op>,
                          .image = image<op>,
                          .narrowing = narrowing<op>,
                          .inverse = inverse<op>};

}  // namespace engine::comparisons
