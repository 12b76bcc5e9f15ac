#pragma once

#include "operators/operator_row.hpp"

/// not, and, or, xor, if. Distances after Hansen and Jaumard: additive conjunction, minimal
/// disjunction; a branch of `if` costs the way to it and its own distance.
namespace engine::connectives {

inline Value notValue(const ValueOperands& x) {
    return isNan(x[0]) ? notANumber : ofBool(!x[0].isTrue());
}

inline Distance notDistance(const DistanceOperands& x) {
    const Distance d = x.distance(0);
    return {d.toFalse, d.toTrue};
}

inline Range notImage(const RangeOperands& x) {
    return negation(x[0]);
}

inline void notNarrowing(const NarrowingStep& x) {
    x.restrictToNumber(0);
    if (x.own().mustBeTrue()) x.restrictToZero(0);
    if (x.own().mustBeZero()) x.restrictToTrue(0);
}

/// 1 - b.
inline bool notLinear(const Operands& x, double factor, LinearTerms& to) {
    if (!to.isBinary(x.indexOf(0))) return false;
    to.addConstant(factor);
    to.addTerm(x.indexOf(0), -factor);
    return true;
}

inline MaybeStep notInverse(const InverseOperands& x, const Goal& goal) {
    if (x.own().isTrue() == goal.truth) return std::nullopt;
    return InverseStep{x.indexOf(0), Goal::ofTruth(!goal.truth)};
}

constexpr OperatorRow negation{.op = LS_OP_NOT,
                               .logic = LogicForm::Not,
                               .value = notValue,
                               .distance = notDistance,
                               .image = notImage,
                               .narrowing = notNarrowing,
                               .linear = notLinear,
                               .inverse = notInverse};

/// `and` (absorbing false) and `or` (absorbing true): an absorbing operand hides a NaN.
template <bool absorbing>
Value junctionValue(const ValueOperands& x) {
    bool sawNan = false;
    for (std::size_t k = 0; k < x.size(); ++k) {
        if (isNan(x[k])) {
            sawNan = true;
        } else if (x[k].isTrue() == absorbing) {
            return ofBool(absorbing);
        }
    }
    return sawNan ? notANumber : ofBool(!absorbing);
}

template <bool absorbing>
Distance junctionDistance(const DistanceOperands& x) {
    double toAbsorb = farAway;
    double toSpare = 0.0;
    for (std::size_t k = 0; k < x.size(); ++k) {
        const Distance& d = x.distance(k);
        toAbsorb = std::min(toAbsorb, absorbing ? d.toTrue : d.toFalse);
        toSpare += absorbing ? d.toFalse : d.toTrue;
    }
    toSpare = std::min(toSpare, farAway);
    return absorbing ? Distance{toAbsorb, toSpare} : Distance{toSpare, toAbsorb};
}

template <bool absorbing>
Range junctionImage(const RangeOperands& x) {
    bool someCanAbsorb = false;
    bool someCannotBeNeutral = false;
    bool mayBeNan = false;
    for (std::size_t k = 0; k < x.size(); ++k) {
        const bool mustAbsorb = absorbing ? x[k].mustBeTrue() : x[k].mustBeZero();
        if (mustAbsorb) return truth(!absorbing, absorbing, false);
        const bool mustBeNeutral = absorbing ? x[k].cannotBeTrue() : !x[k].contains(0.0);
        const bool canBeNeutral = absorbing ? x[k].contains(0.0) : !x[k].cannotBeTrue();
        someCanAbsorb = someCanAbsorb || !mustBeNeutral;
        someCannotBeNeutral = someCannotBeNeutral || !canBeNeutral;
        mayBeNan = mayBeNan || x[k].mayBeNan;
    }
    const bool canBeNeutral = !someCannotBeNeutral;
    return absorbing ? truth(canBeNeutral, someCanAbsorb, mayBeNan)
                     : truth(someCanAbsorb, canBeNeutral, mayBeNan);
}

template <bool absorbing>
void junctionNarrowing(const NarrowingStep& x) {
    const auto make = [&](std::size_t k, bool wanted) {
        wanted ? x.restrictToTrue(k) : x.restrictToZero(k);
    };
    const bool isNeutral = absorbing ? x.own().mustBeZero() : x.own().mustBeTrue();
    if (isNeutral) {
        for (std::size_t k = 0; k < x.size(); ++k) make(k, !absorbing);
        return;
    }
    const bool isAbsorbed = absorbing ? x.own().mustBeTrue() : x.own().mustBeZero();
    if (!isAbsorbed) return;
    // The only operand that can absorb does.
    std::size_t nbAble = 0;
    std::size_t able = 0;
    for (std::size_t k = 0; k < x.size(); ++k) {
        if (absorbing ? x[k].cannotBeTrue() : !x[k].contains(0.0)) continue;
        ++nbAble;
        able = k;
    }
    if (nbAble == 1) make(able, absorbing);
}

inline MaybeStep junctionInverse(const InverseOperands& x, const Goal& goal) {
    if (x.own().isTrue() == goal.truth) return std::nullopt;
    const auto chosen =
        x.anyOperand([&](ExpressionIndex e) { return x.valueOf(e).isTrue() != goal.truth; });
    if (!chosen) return std::nullopt;
    return InverseStep{*chosen, Goal::ofTruth(goal.truth)};
}

template <ls_operator op, LogicForm form, bool absorbing>
constexpr OperatorRow junction{.op = op,
                               .logic = form,
                               .needsNumbers = false,
                               .value = junctionValue<absorbing>,
                               .distance = junctionDistance<absorbing>,
                               .image = junctionImage<absorbing>,
                               .narrowing = junctionNarrowing<absorbing>,
                               .inverse = junctionInverse};
constexpr OperatorRow conjunction = junction<LS_OP_AND, LogicForm::All, /*absorbing=*/false>;
constexpr OperatorRow disjunction = junction<LS_OP_OR, LogicForm::Any, /*absorbing=*/true>;

inline Value xorValue(const ValueOperands& x) {
    bool odd = false;
    for (std::size_t k = 0; k < x.size(); ++k) {
        if (isNan(x[k])) return notANumber;
        odd = odd != x[k].isTrue();
    }
    return ofBool(odd);
}

inline Distance xorDistance(const DistanceOperands& x) {
    bool odd = false;
    double cheapestFlip = farAway;
    for (std::size_t k = 0; k < x.size(); ++k) {
        const Distance& d = x.distance(k);
        if (d.toTrue > 0.0 && d.toFalse > 0.0) return {farAway, farAway};
        if (d.toTrue <= 0.0) odd = !odd;
        cheapestFlip = std::min(cheapestFlip, std::max(d.toTrue, d.toFalse));
    }
    return odd ? Distance{0.0, cheapestFlip} : Distance{cheapestFlip, 0.0};
}

inline Range xorImage(const RangeOperands& x) {
    bool known = true;
    bool odd = false;
    bool mayBeNan = false;
    for (std::size_t k = 0; k < x.size(); ++k) {
        mayBeNan = mayBeNan || x[k].mayBeNan;
        known = known && (x[k].cannotBeTrue() || !x[k].contains(0.0));
        odd = odd != !x[k].cannotBeTrue();
    }
    return truth(!known || !odd, !known || odd, mayBeNan);
}

inline void xorNarrowing(const NarrowingStep& x) {
    std::size_t nbOpen = 0;
    std::size_t open = 0;
    bool odd = false;
    for (std::size_t k = 0; k < x.size(); ++k) {
        x.restrictToNumber(k);
        if (x[k].mustBeTrue()) {
            odd = !odd;
        } else if (!x[k].mustBeZero()) {
            ++nbOpen;
            open = k;
        }
    }
    const bool known = x.own().mustBeTrue() || x.own().mustBeZero();
    if (nbOpen != 1 || !known) return;
    x.own().mustBeTrue() != odd ? x.restrictToTrue(open) : x.restrictToZero(open);
}

inline MaybeStep xorInverse(const InverseOperands& x, const Goal& goal) {
    if (x.own().isTrue() == goal.truth) return std::nullopt;
    const auto chosen = x.anyOperand();
    if (!chosen) return std::nullopt;
    return InverseStep{*chosen, Goal::ofTruth(!x.valueOf(*chosen).isTrue())};
}

constexpr OperatorRow parity{.op = LS_OP_XOR,
                             .logic = LogicForm::Odd,
                             .value = xorValue,
                             .distance = xorDistance,
                             .image = xorImage,
                             .narrowing = xorNarrowing,
                             .inverse = xorInverse};

inline Value ifValue(const ValueOperands& x) {
    if (isNan(x[0])) return notANumber;
    return x[0].isTrue() ? x[1] : x[2];
}

inline Distance ifDistance(const DistanceOperands& x) {
    const Distance condition = x.distance(0);
    const auto cheaper = [&condition](double throughYes, double throughNo) {
        const double cost = std::min(condition.toTrue + throughYes, condition.toFalse + throughNo);
        return std::min(cost, farAway);
    };
    const Distance yes = x.distance(1);
    const Distance no = x.distance(2);
    return {cheaper(yes.toTrue, no.toTrue), cheaper(yes.toFalse, no.toFalse)};
}

inline void ifSlope(const ValueOperands& x, double weight, Adjoints& to) {
    to.give(x.indexOf(x[0].isTrue() ? 1 : 2), weight);
}

inline Range ifImage(const RangeOperands& x) {
    const Range condition = x[0];
    Range result = hull(x[1], x[2]);
    if (condition.cannotBeTrue()) {
        result = x[2];
    } else if (!condition.contains(0.0)) {
        result = x[1];
    }
    result.mayBeNan = result.mayBeNan || condition.mayBeNan;
    return result;
}

inline void ifNarrowing(const NarrowingStep& x) {
    x.restrictToNumber(0);
    const Range whole = x.own();
    const auto fits = [&](std::size_t k) {
        return x[k].lower <= whole.upper && x[k].upper >= whole.lower;
    };
    if (!fits(1)) x.restrictToZero(0);
    if (!fits(2)) x.restrictToTrue(0);
    if (x[0].mustBeTrue()) x.restrict(1, whole);
    if (x[0].mustBeZero()) x.restrict(2, whole);
}

inline MaybeStep ifInverse(const InverseOperands& x, const Goal& goal) {
    const bool condition = x.value(0).isTrue();
    const std::size_t branch = condition ? 1 : 2;
    const bool canSwitch = !x.isFixedAt(0);
    if (!x.isFixedAt(branch) && !(canSwitch && x.random().chance(0.3))) {
        return InverseStep{x.indexOf(branch), goal};
    }
    if (!canSwitch) return std::nullopt;
    return InverseStep{x.indexOf(0), Goal::ofTruth(!condition)};
}

constexpr OperatorRow choice{.op = LS_OP_IF,
                             .logic = LogicForm::Choice,
                             .needsNumbers = false,
                             .value = ifValue,
                             .distance = ifDistance,
                             .slope = ifSlope,
                             .image = ifImage,
                             .narrowing = ifNarrowing,
                             .inverse = ifInverse};

}  // namespace engine::connectives
