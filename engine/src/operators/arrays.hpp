#pragma once

#include "operators/exact_sum.hpp"
#include "operators/operator_row.hpp"

/// array, at, scalarprod. An array has no value of its own; its users read its elements.
namespace engine::arrays {

inline Value arrayValue(const ValueOperands&) {
    return Value::ofInt(0);
}

inline Range arrayImage(const RangeOperands&) {
    return {0.0, 0.0, false};
}

constexpr OperatorRow array{
    .op = LS_OP_ARRAY, .needsNumbers = false, .value = arrayValue, .image = arrayImage};

inline Value atValue(const ValueOperands& x) {
    const ValueOperands elements = x.elementsOf(0);
    // Written so that NaN is outside, too.
    const double index = x.number(1);
    if (!(index >= 0.0 && index < static_cast<double>(elements.size()))) return notANumber;
    return elements[static_cast<std::size_t>(index)];
}

inline void atSlope(const ValueOperands& x, double weight, Adjoints& to) {
    const ValueOperands elements = x.elementsOf(0);
    const double index = x.number(1);
    if (index >= 0.0 && index < static_cast<double>(elements.size())) {
        to.give(elements.indexOf(static_cast<std::size_t>(index)), weight);
    }
}

inline Range atImage(const RangeOperands& x) {
    const RangeOperands elements = x.elementsOf(0);
    const auto size = static_cast<double>(elements.size());
    const Range index = x[1];
    Range result = emptyRange;
    for (double k = std::max(0.0, std::trunc(index.lower));
         k < size && k <= std::trunc(index.upper); k += 1.0) {
        result = hull(result, elements[static_cast<std::size_t>(k)]);
    }
    result.mayBeNan = result.mayBeNan || index.mayBeNan || index.lower < 0.0 || index.upper >= size;
    return result;
}

inline void atNarrowing(const NarrowingStep& x) {
    const auto elements = x.model().operandsOf(x.indexOf(0));
    const Range whole = x.own();
    x.restrict(1, 0.0, static_cast<double>(elements.size()));
    const auto fits = [&](double k) {
        const auto position = static_cast<std::size_t>(std::trunc(k));
        if (position >= elements.size()) return false;
        const Range r = x.rangeOf(elements[position]);
        return r.lower <= whole.upper && r.upper >= whole.lower;
    };
    Range index = x[1];
    while (!index.isEmpty() && !fits(index.lower)) index.lower = std::trunc(index.lower) + 1.0;
    while (!index.isEmpty() && !fits(index.upper)) index.upper = below(std::trunc(index.upper));
    x.restrict(1, index);
    if (index.isEmpty() || std::trunc(index.lower) != std::trunc(index.upper)) return;
    x.restrictElement(elements[static_cast<std::size_t>(std::trunc(index.lower))], whole);
}

inline MaybeStep atInverse(const InverseOperands& x, const Goal& goal) {
    const ExpressionIndex selector = x.indexOf(1);
    const auto elements = x.model().operandsOf(x.indexOf(0));
    const auto current = static_cast<std::size_t>(x.numberOf(selector));
    const bool canSelect = !x.isFixed(selector) && elements.size() > 1;
    if (!x.isFixed(elements[current]) && !(canSelect && x.random().chance(0.5))) {
        return InverseStep{elements[current], goal};
    }
    if (!canSelect) return std::nullopt;
    constexpr int nbDraws = 8;
    std::size_t best = current;
    for (int n = 0; n < nbDraws; ++n) {
        const std::size_t k = x.random().below(elements.size());
        const auto missing = [&](std::size_t i) {
            return std::fabs(x.numberOf(elements[i]) - goal.number);
        };
        if (k != current && (best == current || missing(k) < missing(best))) best = k;
    }
    if (best == current) return std::nullopt;
    return InverseStep{selector, Goal::ofNumber(static_cast<double>(best), 0)};
}

/// The index is truncated; it is never negative.
inline Interval atCell(double index) {
    const double whole = std::trunc(index);
    return {whole, std::nextafter(whole + 1.0, -HUGE_VAL)};
}

constexpr OperatorRow at{.op = LS_OP_AT,
                         .needsNumbers = false,
                         .safeOperand = 0.0,
                         .value = atValue,
                         .slope = atSlope,
                         .image = atImage,
                         .narrowing = atNarrowing,
                         .inverse = atInverse,
                         .cell = atCell};

inline Value scalarprodValue(const ValueOperands& x) {
    const ValueOperands a = x.elementsOf(0);
    const ValueOperands b = x.elementsOf(1);
    if (a.size() != b.size()) return notANumber;
    ExactSum total;
    for (std::size_t k = 0; k < a.size(); ++k) total.add(multiply(a[k], b[k]));
    return total.total();
}

inline void scalarprodSlope(const ValueOperands& x, double weight, Adjoints& to) {
    const ValueOperands a = x.elementsOf(0);
    const ValueOperands b = x.elementsOf(1);
    for (std::size_t k = 0; k < std::min(a.size(), b.size()); ++k) {
        to.give(a.indexOf(k), weight * b.number(k));
        to.give(b.indexOf(k), weight * a.number(k));
    }
}

inline Range scalarprodImage(const RangeOperands& x) {
    const RangeOperands a = x.elementsOf(0);
    const RangeOperands b = x.elementsOf(1);
    if (a.size() != b.size()) return neutral::image(x);
    RangeSum total;
    for (std::size_t k = 0; k < a.size(); ++k) total.add(product(a[k], b[k]));
    return total.total();
}

inline MaybeStep scalarprodInverse(const InverseOperands& x, const Goal& goal) {
    const auto a = x.model().operandsOf(x.indexOf(0));
    const auto b = x.model().operandsOf(x.indexOf(1));
    if (a.empty()) return std::nullopt;
    const std::size_t k = x.random().below(a.size());
    const bool moveFirst = x.movesFirst(a[k], b[k]);
    const ExpressionIndex moved = moveFirst ? a[k] : b[k];
    const double factor = x.numberOf(moveFirst ? b[k] : a[k]);
    if (x.isFixed(moved) || factor == 0.0) return std::nullopt;
    const double wanted = x.numberOf(moved) + (goal.number - x.ownNumber()) / factor;
    return InverseStep{moved, Goal::ofNumber(wanted, 0)};
}

constexpr OperatorRow scalarprod{.op = LS_OP_SCALARPROD,
                                 .value = scalarprodValue,
                                 .slope = scalarprodSlope,
                                 .image = scalarprodImage,
                                 .inverse = scalarprodInverse};

}  // namespace engine::arrays
