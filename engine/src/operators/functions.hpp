#pragma once

#include <numbers>

#include "operators/operator_row.hpp"

/// sqrt, log, exp, pow, cos, sin, tan.
namespace engine::functions {

/// Errors of the mathematical library's functions, generously, in roundings.
constexpr double nbFunctionRoundings = 8.0;

inline Range monotone(const Range& r, double (*f)(double), double nbRoundings) {
    if (r.isEmpty()) return r;
    return widened({f(r.lower), f(r.upper), r.mayBeNan}, nbRoundings);
}

/// `r` without the part below 0, where the function has no value.
inline Range domainOfRoot(Range r) {
    r.mayBeNan = r.mayBeNan || r.lower < 0.0;
    r.lower = std::max(r.lower, 0.0);
    return r;
}

/// The operand, not negative, lies between the inverse images of the bounds.
inline void narrowByInverse(const NarrowingStep& x, double (*inverse)(double)) {
    const Range image = widened(x.own(), 16.0);
    const Range argument = widened({inverse(image.lower), inverse(image.upper), false}, 16.0);
    x.restrict(0, std::max(0.0, argument.lower), argument.upper);
}

/// Concave and rising: so for a concave argument.
inline Curvature concaveFunction(const CurvatureOperands& x) {
    return concaveIf(isConcave(x.curvature(0)));
}

inline Value sqrtValue(const ValueOperands& x) {
    return Value::ofDouble(std::sqrt(x.number(0)));
}

inline void sqrtSlope(const ValueOperands& x, double weight, Adjoints& to) {
    to.give(x.indexOf(0), weight * (0.5 / x.own().asDouble()));
}

inline Range sqrtImage(const RangeOperands& x) {
    const Range r = domainOfRoot(x[0]);
    if (r.isEmpty()) return r;
    return {std::sqrt(r.lower), std::sqrt(r.upper), r.mayBeNan};
}

inline void sqrtNarrowing(const NarrowingStep& x) {
    if (x.own().upper < 0.0) return x.restrict(0, emptyRange);
    narrowByInverse(x, [](double v) { return v <= 0.0 ? 0.0 : v * v; });
}

inline MaybeStep sqrtInverse(const InverseOperands& x, const Goal& goal) {
    const double t = goal.number;
    return InverseStep{x.indexOf(0), Goal::ofNumber(t > 0.0 ? t * t : 0.0, goal.direction)};
}

constexpr OperatorRow sqrt{.op = LS_OP_SQRT,
                           .value = sqrtValue,
                           .slope = sqrtSlope,
                           .image = sqrtImage,
                           .narrowing = sqrtNarrowing,
                           .curvature = concaveFunction,
                           .inverse = sqrtInverse};

inline Value logValue(const ValueOperands& x) {
    const double d = x.number(0);
    return d > 0.0 ? Value::ofDouble(std::log(d)) : notANumber;
}

inline void logSlope(const ValueOperands& x, double weight, Adjoints& to) {
    to.give(x.indexOf(0), weight * (1.0 / x.number(0)));
}

inline Range logImage(const RangeOperands& x) {
    Range r = domainOfRoot(x[0]);
    r.mayBeNan = r.mayBeNan || x[0].lower <= 0.0;
    if (r.upper <= 0.0) return {infinity, -infinity, r.mayBeNan};
    return monotone(
        r, [](double v) { return std::log(v); }, nbFunctionRoundings);
}

inline void logNarrowing(const NarrowingStep& x) {
    narrowByInverse(x, [](double v) { return std::exp(v); });
}

inline MaybeStep logInverse(const InverseOperands& x, const Goal& goal) {
    return InverseStep{x.indexOf(0), Goal::ofNumber(std::exp(goal.number), goal.direction)};
}

constexpr OperatorRow log{.op = LS_OP_LOG,
                          .value = logValue,
                          .slope = logSlope,
                          .image = logImage,
                          .narrowing = logNarrowing,
                          .curvature = concaveFunction,
                          .inverse = logInverse};

inline Value expValue(const ValueOperands& x) {
    return Value::ofDouble(std::exp(x.number(0)));
}

inline void expSlope(const ValueOperands& x, double weight, Adjoints& to) {
    to.give(x.indexOf(0), weight * x.own().asDouble());
}

inline Range expImage(const RangeOperands& x) {
    Range r = monotone(
        x[0], [](double v) { return std::exp(v); }, nbFunctionRoundings);
    if (!r.isEmpty()) r.lower = std::max(r.lower, 0.0);
    return r;
}

inline void expNarrowing(const NarrowingStep& x) {
    const Range image = widened(x.own(), 16.0);
    if (image.upper < 0.0) return x.restrict(0, emptyRange);
    // Anything very negative underflows to the same tiny results.
    constexpr double least = 1e-300;
    const Range argument{image.lower <= least ? -infinity : std::log(image.lower),
                         std::log(std::max(image.upper, least)), false};
    x.restrict(0, widened(argument, 16.0));
}

inline Curvature expCurvature(const CurvatureOperands& x) {
    return convexIf(isConvex(x.curvature(0)));
}

inline MaybeStep expInverse(const InverseOperands& x, const Goal& goal) {
    const double t = goal.number;
    const double wanted = t > 0.0 ? std::log(t) : x.number(0) - 1.0;
    return InverseStep{x.indexOf(0), Goal::ofNumber(wanted, goal.direction)};
}

constexpr OperatorRow exp{.op = LS_OP_EXP,
                          .value = expValue,
                          .slope = expSlope,
                          .image = expImage,
                          .narrowing = expNarrowing,
                          .curvature = expCurvature,
                          .inverse = expInverse};

inline Value powValue(const ValueOperands& x) {
    // The library's pow knows numbers to which what NaN stands for makes no difference.
    if (isNan(x[0]) || isNan(x[1])) return notANumber;
    const double result = std::pow(x.number(0), x.number(1));
    return std::isinf(result) && !x[0].isTrue() ? pole : Value::ofDouble(result);
}

inline void powSlope(const ValueOperands& x, double weight, Adjoints& to) {
    const double base = x.number(0);
    const double exponent = x.number(1);
    to.give(x.indexOf(0), weight * exponent * std::pow(base, exponent - 1.0));
    if (base > 0.0) to.give(x.indexOf(1), weight * x.own().asDouble() * std::log(base));
}

/// base^n for a constant whole exponent.
inline Range wholePower(const Range& base, double n) {
    const bool isEven = std::fmod(n, 2.0) == 0.0;
    const Range x = isEven ? absolute(base) : base;
    if (n < 0.0 && x.contains(0.0) && !isEven) return {-infinity, infinity, x.mayBeNan};
    Range p{std::pow(x.lower, n), std::pow(x.upper, n), x.mayBeNan};
    if (n < 0.0) {
        // Decreasing; a signed zero has no say in which infinity an even power becomes.
        std::swap(p.lower, p.upper);
        if (x.contains(0.0)) p.upper = infinity;
    }
    return widened(p, nbFunctionRoundings);
}

inline Range powImage(const RangeOperands& operands) {
    const Range base = operands[0];
    const Range exponent = operands[1];
    const Range anything = neutral::image(operands);
    // An infinite exponent is no power at all.
    if (base.mayBeNan || exponent.mayBeNan) return anything;
    if (std::isinf(exponent.lower) || std::isinf(exponent.upper)) return anything;
    if (exponent.isPoint() && exponent.lower == std::rint(exponent.lower)) {
        return wholePower(base, exponent.lower);
    }
    Range x = base;
    if (x.lower < 0.0) {
        if (!exponent.isPoint()) return anything;
        x = domainOfRoot(base);
        // An infinite base has powers even below zero.
        if (x.isEmpty() || std::isinf(base.lower)) return anything;
    }
    // Monotone in each argument: the extremes are at the corners.
    const double corners[] = {std::pow(x.lower, exponent.lower), std::pow(x.lower, exponent.upper),
                              std::pow(x.upper, exponent.lower), std::pow(x.upper, exponent.upper)};
    Range p{*std::min_element(std::begin(corners), std::end(corners)),
            *std::max_element(std::begin(corners), std::end(corners)), x.mayBeNan};
    return widened(p, nbFunctionRoundings);
}

/// Inverse of a power with a constant positive exponent.
inline void powNarrowing(const NarrowingStep& x) {
    numbersOnly(x);
    const Range exponent = x[1];
    const double n = exponent.lower;
    if (x[0].mayBeNan || !exponent.isPoint() || !(n > 0.0) || std::isinf(n)) return;
    const Range image = widened(x.own(), 16.0);
    const bool isWhole = n == std::rint(n);
    // The rounding of 1 / n is magnified by the logarithm of the result, 710 at most.
    const auto rootOf = [n](double v) { return std::copysign(std::pow(std::fabs(v), 1.0 / n), v); };
    if (isWhole && std::fmod(n, 2.0) == 1.0) {
        return x.restrict(0, widened({rootOf(image.lower), rootOf(image.upper), false}, 1024.0));
    }
    if (image.upper < 0.0) return x.restrict(0, emptyRange);
    const Range root =
        widened({rootOf(std::max(0.0, image.lower)), rootOf(image.upper), false}, 1024.0);
    isWhole ? x.restrictMagnitude(0, root) : x.restrict(0, root);
}

inline Curvature powCurvature(const CurvatureOperands& x) {
    const Curvature base = x.curvature(0);
    const Curvature exponent = x.curvature(1);
    if (x.isConstant(0)) {
        const double b = x.number(0);
        return convexIf((b >= 1.0 && isConvex(exponent)) ||
                        (b > 0.0 && b <= 1.0 && isConcave(exponent)));
    }
    if (!x.isConstant(1)) return Curvature::Unknown;
    const double p = x.number(1);
    const Range r = x.range(0);
    const bool isPositive = r.lower >= 0.0;
    if (p == 1.0) return base;
    if (p > 0.0 && p < 1.0) return concaveIf(isPositive && isConcave(base));
    if (p < 0.0) return convexIf(isPositive && isConcave(base));
    if (p > 1.0 && isPositive) return convexIf(isConvex(base));
    const bool isEven = std::fmod(p, 2.0) == 0.0;
    const bool isOdd = std::fabs(std::fmod(p, 2.0)) == 1.0;
    if (p > 1.0 && isEven) {
        return convexIf(isAffine(base) || (base == Curvature::Concave && r.upper <= 0.0));
    }
    return concaveIf(p > 1.0 && isOdd && r.upper <= 0.0 && isConcave(base));
}

inline MaybeStep powInverse(const InverseOperands& x, const Goal& goal) {
    const double base = x.number(0);
    const double exponent = x.number(1);
    if (x.isFixedAt(0) || (!x.isFixedAt(1) && x.random().chance(0.3))) {
        if (base <= 0.0 || base == 1.0 || goal.number <= 0.0) return std::nullopt;
        const double wanted = std::log(goal.number) / std::log(base);
        return InverseStep{x.indexOf(1), Goal::ofNumber(wanted, 0)};
    }
    if (exponent == 0.0) return std::nullopt;
    const bool isWhole = exponent == std::trunc(exponent);
    if (isWhole && exponent > 0.0) {
        return InverseStep{x.indexOf(0), x.rootGoal(base, exponent, goal)};
    }
    const double root = std::pow(std::fmax(goal.number, 0.0), 1.0 / exponent);
    const double sign = isWhole ? std::copysign(1.0, base) : 1.0;
    return InverseStep{x.indexOf(0), Goal::ofNumber(sign * root, 0)};
}

constexpr OperatorRow pow{.op = LS_OP_POW,
                          .givesPoles = true,
                          .value = powValue,
                          .slope = powSlope,
                          .image = powImage,
                          .narrowing = powNarrowing,
                          .curvature = powCurvature,
                          .inverse = powInverse};

/// cos over `r`; `shift` turns it into sin.
inline Range cosine(const Range& r, double shift) {
    constexpr double pi = std::numbers::pi;
    Range result{-1.0, 1.0, r.mayBeNan || std::isinf(r.lower) || std::isinf(r.upper)};
    const double magnitude = std::max(std::fabs(r.lower), std::fabs(r.upper));
    if (r.isEmpty() || !(magnitude < 1e6) || r.upper - r.lower >= 2.0 * pi) return result;
    // Whether a multiple of pi lies inside, with a margin for the rounding of the argument.
    const double margin = 1e-8;
    const double first = std::ceil((r.lower - shift - margin) / pi);
    const double last = std::floor((r.upper - shift + margin) / pi);
    const double a = std::cos(r.lower - shift);
    const double b = std::cos(r.upper - shift);
    result.lower = std::min(a, b) - margin;
    result.upper = std::max(a, b) + margin;
    for (double k = first; k <= last; k += 1.0) {
        if (std::fmod(std::fabs(k), 2.0) == 0.0) {
            result.upper = 1.0;
        } else {
            result.lower = -1.0;
        }
    }
    return {std::max(result.lower, -1.0), std::min(result.upper, 1.0), result.mayBeNan};
}

/// Of the solutions of a periodic equation the one that is nearest to the current argument.
inline MaybeStep nearestSolution(const InverseOperands& x, double solution, double period) {
    const double nearest = solution + period * std::round((x.number(0) - solution) / period);
    return InverseStep{x.indexOf(0), Goal::ofNumber(nearest, 0)};
}

inline Value cosValue(const ValueOperands& x) {
    return Value::ofDouble(std::cos(x.number(0)));
}

inline void cosSlope(const ValueOperands& x, double weight, Adjoints& to) {
    to.give(x.indexOf(0), weight * -std::sin(x.number(0)));
}

inline Range cosImage(const RangeOperands& x) {
    return cosine(x[0], 0.0);
}

inline MaybeStep cosInverse(const InverseOperands& x, const Goal& goal) {
    const double angle = std::acos(std::clamp(goal.number, -1.0, 1.0));
    const bool mirrored = x.random().chance(0.5);
    return nearestSolution(x, mirrored ? -angle : angle, 2.0 * std::numbers::pi);
}

constexpr OperatorRow cos{.op = LS_OP_COS,
                          .value = cosValue,
                          .slope = cosSlope,
                          .image = cosImage,
                          .narrowing = numbersOnly,
                          .inverse = cosInverse};

inline Value sinValue(const ValueOperands& x) {
    return Value::ofDouble(std::sin(x.number(0)));
}

inline void sinSlope(const ValueOperands& x, double weight, Adjoints& to) {
    to.give(x.indexOf(0), weight * std::cos(x.number(0)));
}

inline Range sinImage(const RangeOperands& x) {
    return cosine(x[0], std::numbers::pi / 2.0);
}

inline MaybeStep sinInverse(const InverseOperands& x, const Goal& goal) {
    constexpr double pi = std::numbers::pi;
    const double angle = std::asin(std::clamp(goal.number, -1.0, 1.0));
    const bool mirrored = x.random().chance(0.5);
    return nearestSolution(x, mirrored ? pi - angle : angle, 2.0 * pi);
}

constexpr OperatorRow sin{.op = LS_OP_SIN,
                          .value = sinValue,
                          .slope = sinSlope,
                          .image = sinImage,
                          .narrowing = numbersOnly,
                          .inverse = sinInverse};

inline Value tanValue(const ValueOperands& x) {
    return Value::ofDouble(std::tan(x.number(0)));
}

inline void tanSlope(const ValueOperands& x, double weight, Adjoints& to) {
    const double value = x.own().asDouble();
    to.give(x.indexOf(0), weight * (1.0 + value * value));
}

inline Range tanImage(const RangeOperands& x) {
    const Range r = x[0];
    if (!r.isPoint() || !std::isfinite(r.lower)) return neutral::image(x);
    return widened({std::tan(r.lower), std::tan(r.lower), r.mayBeNan}, nbFunctionRoundings);
}

inline MaybeStep tanInverse(const InverseOperands& x, const Goal& goal) {
    return nearestSolution(x, std::atan(goal.number), std::numbers::pi);
}

constexpr OperatorRow tan{.op = LS_OP_TAN,
                          .value = tanValue,
                          .slope = tanSlope,
                          .image = tanImage,
                          .narrowing = numbersOnly,
                          .inverse = tanInverse};

}  // namespace engine::functions
