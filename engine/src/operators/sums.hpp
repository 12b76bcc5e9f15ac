#pragma once

#include "operators/exact_sum.hpp"
#include "operators/operator_row.hpp"

/// sum, sub.
namespace engine::sums {

inline Value sumValue(const ValueOperands& x) {
    ExactSum total;
    for (std::size_t k = 0; k < x.size(); ++k) total.add(x[k]);
    return total.total();
}

inline void sumSlope(const ValueOperands& x, double weight, Adjoints& to) {
    for (const ExpressionIndex e : x.indices()) to.give(e, weight);
}

inline Range sumImage(const RangeOperands& x) {
    RangeSum total;
    for (std::size_t k = 0; k < x.size(); ++k) total.add(x[k]);
    return total.total();
}

inline void sumNarrowing(const NarrowingStep& x) {
    RangeSum total;
    for (std::size_t k = 0; k < x.size(); ++k) total.add(x[k]);
    const Range whole = x.beforeRounding(2.0);
    const double widthWithoutEffect = total.widthWithoutEffect(whole);
    for (std::size_t k = 0; k < x.size(); ++k) {
        const Range own = x[k];
        if (own.upper - own.lower < widthWithoutEffect) continue;
        // Ranges narrowed on the way make `rest` wider than it need be, never wrong: an operand
        // that occurs twice is taken away with the range it was added with or a narrower one.
        const Range rest = total.without(own);
        const double lower = whole.lower - rest.upper;
        const double upper = whole.upper - rest.lower;
        x.restrict(k, std::isnan(lower) ? -infinity : below(lower),
                   std::isnan(upper) ? infinity : above(upper));
    }
}

inline Curvature sumCurvature(const CurvatureOperands& x) {
    Curvature total = Curvature::Constant;
    for (std::size_t k = 0; k < x.size(); ++k) total = added(total, x.curvature(k));
    return total;
}

inline bool sumLinear(const Operands& x, double factor, LinearTerms& to) {
    for (const ExpressionIndex e : x.indices()) to.addTerm(e, factor);
    return true;
}

inline MaybeStep sumInverse(const InverseOperands& x, const Goal& goal) {
    constexpr int nbDraws = 12;
    const double missing = goal.number - x.ownNumber();
    if (!std::isfinite(missing)) {
        const auto term =
            x.anyOperand([&](ExpressionIndex e) { return !std::isfinite(x.numberOf(e)); });
        if (!term) return std::nullopt;
        return InverseStep{*term, Goal::ofNumber(0.0, 0)};
    }
    for (int n = 0; n < nbDraws; ++n) {
        const Term term = x.term(x.random().below(x.size()));
        const double factor = term.factor.asDouble();
        if (x.isFixed(term.expression) || factor == 0.0) continue;
        const double wanted = x.numberOf(term.expression) + missing / factor;
        if (!x.hasRoom(term.expression, wanted)) continue;
        return InverseStep{term.expression, Goal::ofNumber(wanted, turned(goal.direction, factor))};
    }
    return std::nullopt;
}

constexpr OperatorRow sum{.op = LS_OP_SUM,
                          .value = sumValue,
                          .slope = sumSlope,
                          .image = sumImage,
                          .narrowing = sumNarrowing,
                          .curvature = sumCurvature,
                          .linear = sumLinear,
                          .inverse = sumInverse};

inline Value subValue(const ValueOperands& x) {
    return subtract(x[0], x[1]);
}

inline void subSlope(const ValueOperands& x, double weight, Adjoints& to) {
    to.give(x.indexOf(0), weight);
    to.give(x.indexOf(1), -weight);
}

inline Range subImage(const RangeOperands& x) {
    return difference(x[0], x[1]);
}

inline void subNarrowing(const NarrowingStep& x) {
    const Range whole = x.beforeRounding(2.0);
    const Range a = x[0];
    const Range b = x[1];
    RangeSum left;  // a = e + b
    left.add(whole);
    left.add(b);
    x.restrict(0, left.total());
    RangeSum right;  // b = a - e
    right.add(a);
    right.add({-whole.upper, -whole.lower, false});
    x.restrict(1, right.total());
}

inline Curvature subCurvature(const CurvatureOperands& x) {
    return added(x.curvature(0), flipped(x.curvature(1)));
}

inline bool subLinear(const Operands& x, double factor, LinearTerms& to) {
    to.addTerm(x.indexOf(0), factor);
    to.addTerm(x.indexOf(1), -factor);
    return true;
}

inline MaybeStep subInverse(const InverseOperands& x, const Goal& goal) {
    const ExpressionIndex a = x.indexOf(0);
    const ExpressionIndex b = x.indexOf(1);
    if (x.movesFirst(a, b)) {
        return InverseStep{a, Goal::ofNumber(goal.number + x.numberOf(b), goal.direction)};
    }
    return InverseStep{b, Goal::ofNumber(x.numberOf(a) - goal.number, -goal.direction)};
}

constexpr OperatorRow sub{.op = LS_OP_SUB,
                          .value = subValue,
                          .slope = subSlope,
                          .image = subImage,
                          .narrowing = subNarrowing,
                          .curvature = subCurvature,
                          .linear = subLinear,
                          .inverse = subInverse};

}  // namespace engine::sums
