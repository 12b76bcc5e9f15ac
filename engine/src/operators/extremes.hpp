#pragma once

#include "operators/operator_row.hpp"

/// max, min, abs, dist.
namespace engine::extremes {

/// The largest (sign 1) or smallest (-1) operand.
template <int sign>
Value extremeValue(const ValueOperands& x) {
    Value best = x[0];
    for (std::size_t k = 1; k < x.size() && !isNan(best); ++k) {
        if (isNan(x[k]) || compare(x[k], best) == sign) best = x[k];
    }
    return best;
}

inline void extremeSlope(const ValueOperands& x, double weight, Adjoints& to) {
    const double value = x.own().asDouble();
    for (std::size_t k = 0; k < x.size(); ++k) {
        if (x.number(k) == value) return to.give(x.indexOf(k), weight);
    }
}

template <int sign>
Range extremeImage(const RangeOperands& x) {
    const auto pick = [](double a, double b) { return sign > 0 ? std::max(a, b) : std::min(a, b); };
    Range result = x[0];
    for (std::size_t k = 1; k < x.size(); ++k) {
        result = {pick(result.lower, x[k].lower), pick(result.upper, x[k].upper),
                  result.mayBeNan || x[k].mayBeNan};
    }
    return result;
}

template <int sign>
void extremeNarrowing(const NarrowingStep& x) {
    const Range whole = x.own();
    std::size_t nbAble = 0;
    std::size_t able = 0;
    for (std::size_t k = 0; k < x.size(); ++k) {
        if (sign > 0) {
            x.restrict(k, -infinity, whole.upper);
        } else {
            x.restrict(k, whole.lower, infinity);
        }
        const bool reaches = sign > 0 ? x[k].upper >= whole.lower : x[k].lower <= whole.upper;
        if (reaches) {
            ++nbAble;
            able = k;
        }
    }
    // The only operand that can be the extreme one is it.
    if (nbAble == 1) x.restrict(able, whole.lower, whole.upper);
}

template <int sign>
Curvature extremeCurvature(const CurvatureOperands& x) {
    return sign > 0 ? convexIf(x.all(isConvex)) : concaveIf(x.all(isConcave));
}

template <int sign>
MaybeStep extremeInverse(const InverseOperands& x, const Goal& goal) {
    // Written for max; min is max of the negated.
    const double wanted = goal.number;
    const bool down = sign * x.ownNumber() > sign * wanted;
    const auto chosen = x.anyOperand(
        [&](ExpressionIndex e) { return !down || sign * x.numberOf(e) > sign * wanted; });
    if (!chosen) return std::nullopt;
    return InverseStep{*chosen, Goal::ofNumber(wanted, down ? -sign : goal.direction)};
}

template <ls_operator op, int sign>
constexpr OperatorRow extreme{.op = op,
                              .value = extremeValue<sign>,
                              .slope = extremeSlope,
                              .image = extremeImage<sign>,
                              .narrowing = extremeNarrowing<sign>,
                              .curvature = extremeCurvature<sign>,
                              .inverse = extremeInverse<sign>};
constexpr OperatorRow max = extreme<LS_OP_MAX, 1>;
constexpr OperatorRow min = extreme<LS_OP_MIN, -1>;

inline Value absValue(const ValueOperands& x) {
    return absolute(x[0]);
}

inline void absSlope(const ValueOperands& x, double weight, Adjoints& to) {
    to.give(x.indexOf(0), weight * (x.number(0) < 0.0 ? -1.0 : 1.0));
}

inline Range absImage(const RangeOperands& x) {
    return absolute(x[0]);
}

inline void absNarrowing(const NarrowingStep& x) {
    x.restrictMagnitude(0, x.own());
}

inline Curvature absCurvature(const CurvatureOperands& x) {
    return convexIf(isAffine(x.curvature(0)));
}

inline MaybeStep absInverse(const InverseOperands& x, const Goal& goal) {
    const bool negative = (x.number(0) < 0.0) != x.random().chance(0.1);
    const double size = std::fmax(goal.number, 0.0);
    return InverseStep{x.indexOf(0), Goal::ofNumber(negative ? -size : size,
                                                    negative ? -goal.direction : goal.direction)};
}

constexpr OperatorRow abs{.op = LS_OP_ABS,
                          .value = absValue,
                          .slope = absSlope,
                          .image = absImage,
                          .narrowing = absNarrowing,
                          .curvature = absCurvature,
                          .inverse = absInverse};

inline Value distValue(const ValueOperands& x) {
    return absolute(subtract(x[0], x[1]));
}

inline void distSlope(const ValueOperands& x, double weight, Adjoints& to) {
    const double sign = x.number(0) < x.number(1) ? -1.0 : 1.0;
    to.give(x.indexOf(0), sign * weight);
    to.give(x.indexOf(1), -sign * weight);
}

inline Range distImage(const RangeOperands& x) {
    return absolute(difference(x[0], x[1]));
}

inline void distNarrowing(const NarrowingStep& x) {
    const double reach = x.own().upper;
    const Range a = x[0];
    const Range b = x[1];
    // Widened by the rounding of the difference, which is relative to the result.
    const double slack = above(reach * (1.0 + 4.0 * DBL_EPSILON));
    x.restrict(0, below(b.lower - slack), above(b.upper + slack));
    x.restrict(1, below(a.lower - slack), above(a.upper + slack));
}

inline Curvature distCurvature(const CurvatureOperands& x) {
    return convexIf(x.all(isAffine));
}

inline MaybeStep distInverse(const InverseOperands& x, const Goal& goal) {
    const ExpressionIndex a = x.indexOf(0);
    const ExpressionIndex b = x.indexOf(1);
    double difference = x.numberOf(a) - x.numberOf(b);
    if (difference == 0.0 || x.random().chance(0.1)) {
        difference = x.random().chance(0.5) ? 1.0 : -1.0;
    }
    const double wanted = std::copysign(std::fmax(goal.number, 0.0), difference);
    if (x.movesFirst(a, b)) return InverseStep{a, Goal::ofNumber(x.numberOf(b) + wanted, 0)};
    return InverseStep{b, Goal::ofNumber(x.numberOf(a) - wanted, 0)};
}

constexpr OperatorRow dist{.op = LS_OP_DIST,
                           .value = distValue,
                           .slope = distSlope,
                           .image = distImage,
                           .narrowing = distNarrowing,
                           .curvature = distCurvature,
                           .inverse = distInverse};

}  // namespace engine::extremes
