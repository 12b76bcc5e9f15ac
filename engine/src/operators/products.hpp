#pragma once

#include <vector>

#include "operators/operator_row.hpp"

/// prod, div, mod.
namespace engine::products {

inline Value prodValue(const ValueOperands& x) {
    bool hasZero = false;
    bool allIntegers = true;
    Value result = Value::ofInt(1);
    for (std::size_t k = 0; k < x.size(); ++k) {
        if (spoilsProducts(x[k])) return notANumber;
        hasZero = hasZero || (!x[k].isTrue() && !isPole(x[k]));
        allIntegers = allIntegers && x[k].isInt();
        if (!hasZero) result = multiply(result, x[k]);
    }
    if (hasZero) return allIntegers ? Value::ofInt(0) : Value::ofDouble(0.0);
    return result;
}

inline void prodSlope(const ValueOperands& x, double weight, Adjoints& to) {
    std::vector<double>& suffix = to.scratch;  // products of the last operands
    suffix.assign(x.size() + 1, 1.0);
    for (std::size_t k = x.size(); k-- > 0;) suffix[k] = suffix[k + 1] * x.number(k);
    double prefix = weight;
    for (std::size_t k = 0; k < x.size(); ++k) {
        to.give(x.indexOf(k), prefix * suffix[k + 1]);
        prefix *= x.number(k);
    }
}

inline Range prodImage(const RangeOperands& x) {
    Range result{1.0, 1.0, false};
    std::size_t k = 0;
    if (x.size() >= 2 && x.indexOf(0) == x.indexOf(1)) {
        result = square(x[0]);
        k = 2;
    }
    for (; k < x.size(); ++k) {
        result = product(result, x[k]);
        // Exact integers beyond 53 bits are rounded once by the judge, here at every step.
        if (result.lower < -largestExactInteger || result.upper > largestExactInteger) {
            result = widened(result, 2.0);
        }
    }
    return result;
}

inline void narrowSquare(const NarrowingStep& x) {
    Range rest{1.0, 1.0, false};
    for (std::size_t k = 2; k < x.size(); ++k) rest = product(rest, x[k]);
    const Range square = widened(quotient(widened(x.own(), 8.0), widened(rest, 8.0)), 2.0);
    if (square.mayBeNan) return x.restrictToNumber(0);
    if (square.upper < 0.0) return x.restrict(0, emptyRange);
    const Range root{std::sqrt(std::max(0.0, square.lower)), std::sqrt(square.upper), false};
    x.restrictMagnitude(0, widened(root, 8.0));
}

inline void prodNarrowing(const NarrowingStep& x) {
    const std::size_t n = x.size();
    if (n >= 2 && x.indexOf(0) == x.indexOf(1)) {
        narrowSquare(x);
        for (std::size_t k = 2; k < n; ++k) x.restrictToNumber(k);
        return;
    }
    // rest of k = (product of those before) * (product of those after)
    std::vector<Range> after(n + 1, Range{1.0, 1.0, false});
    for (std::size_t k = n; k-- > 0;) after[k] = product(after[k + 1], x[k]);
    Range before{1.0, 1.0, false};
    for (std::size_t k = 0; k < n; ++k) {
        const Range rest = product(before, after[k + 1]);
        before = product(before, x[k]);
        const double least = std::min(std::fabs(rest.lower), std::fabs(rest.upper));
        // Far from 1 an underflow of a partial product could hide in the quotient.
        const bool usable = !rest.contains(0.0) && least > 1e-100;
        const auto roundings = static_cast<double>(2 * n + 2);
        const Range q =
            usable ? widened(quotient(widened(x.own(), roundings), widened(rest, roundings)), 2.0)
                   : Range{};
        x.restrict(k, q.mayBeNan ? Range{} : q);
    }
}

inline Curvature curvatureOfSquare(const CurvatureOperands& x, std::size_t k) {
    const Curvature base = x.curvature(k);
    const Range r = x.range(k);
    return convexIf(isAffine(base) || (base == Curvature::Convex && r.lower >= 0.0) ||
                    (base == Curvature::Concave && r.upper <= 0.0));
}

/// A multiple of one expression or of a square.
inline Curvature prodCurvature(const CurvatureOperands& x) {
    double factor = 1.0;
    std::vector<std::size_t> others;
    for (std::size_t k = 0; k < x.size(); ++k) {
        if (x.isConstant(k)) {
            factor *= x.number(k);
        } else {
            others.push_back(k);
        }
    }
    if (!std::isfinite(factor)) return Curvature::Unknown;
    Curvature curvature = Curvature::Unknown;
    if (others.size() == 1) curvature = x.curvature(others[0]);
    if (others.size() == 2 && x.indexOf(others[0]) == x.indexOf(others[1])) {
        curvature = curvatureOfSquare(x, others[0]);
    }
    return factor < 0.0 ? flipped(curvature) : curvature;
}

inline bool prodLinear(const Operands& x, double factor, LinearTerms& to) {
    return to.addProduct(x.indices(), factor);
}

/// Where the others give 0, nothing helps but another operand: the one that is 0 must leave it.
inline MaybeStep leaveZero(const InverseOperands& x, const Goal& goal) {
    const auto zero = x.anyOperand([&](ExpressionIndex e) { return x.numberOf(e) == 0.0; });
    if (!zero || goal.number == 0.0) return std::nullopt;
    const bool isBoolean = x.model().operatorOf(*zero) == LS_OP_BOOL;
    return InverseStep{*zero, Goal::ofNumber(isBoolean ? 1.0 : goal.number, 0)};
}

inline MaybeStep prodInverse(const InverseOperands& x, const Goal& goal) {
    const auto chosen = x.anyOperand();
    if (!chosen) return std::nullopt;
    double others = 1.0;
    double multiplicity = 0.0;
    for (const ExpressionIndex e : x.indices()) {
        e == * chosen ? multiplicity += 1.0 : others *= x.numberOf(e);
    }
    if (others == 0.0) return leaveZero(x, goal);
    const Goal quotient = Goal::ofNumber(goal.number / others, turned(goal.direction, others));
    if (std::isnan(quotient.number)) return std::nullopt;
    if (multiplicity < 1.5) return InverseStep{*chosen, quotient};
    return InverseStep{*chosen, x.rootGoal(x.numberOf(*chosen), multiplicity, quotient)};
}

constexpr OperatorRow prod{.op = LS_OP_PROD,
                           .value = prodValue,
                           .slope = prodSlope,
                           .image = prodImage,
                           .narrowing = prodNarrowing,
                           .curvature = prodCurvature,
                           .linear = prodLinear,
                           .inverse = prodInverse};

inline Value divValue(const ValueOperands& x) {
    const double divisor = x.number(1);
    if (divisor == 0.0) return notANumber;
    return Value::ofDouble(x.number(0) / divisor);
}

inline void divSlope(const ValueOperands& x, double weight, Adjoints& to) {
    const double value = x.own().asDouble();
    to.give(x.indexOf(0), weight / x.number(1));
    to.give(x.indexOf(1), -weight * value / x.number(1));
}

inline Range divImage(const RangeOperands& x) {
    return quotient(x[0], x[1]);
}

inline void divNarrowing(const NarrowingStep& x) {
    const Range whole = widened(x.own(), 4.0);
    const Range a = x[0];
    const Range b = x[1];
    if (!std::isinf(b.lower) && !std::isinf(b.upper)) {
        x.restrict(0, widened(product(whole, b), 4.0));
    } else {
        x.restrictToNumber(0);
    }
    const bool usable = !whole.contains(0.0) && std::isfinite(a.lower) && std::isfinite(a.upper);
    x.restrict(1, usable ? widened(quotient(a, whole), 4.0) : Range{});
    // The divisor is not 0.
    if (x[1].mustBeZero()) x.restrict(1, emptyRange);
}

inline Curvature divCurvature(const CurvatureOperands& x) {
    const Curvature upper = x.curvature(0);
    const Curvature lower = x.curvature(1);
    if (x.isConstant(1)) return x.number(1) < 0.0 ? flipped(upper) : upper;
    if (!x.isConstant(0)) return Curvature::Unknown;
    // c / x: convex for a positive x that is concave, or a negative one that is convex, turned.
    const Range r = x.range(1);
    Curvature reciprocal = Curvature::Unknown;
    if (r.lower >= 0.0 && isConcave(lower)) reciprocal = Curvature::Convex;
    if (r.upper <= 0.0 && isConvex(lower)) reciprocal = Curvature::Concave;
    return x.number(0) < 0.0 ? flipped(reciprocal) : reciprocal;
}

inline bool divLinear(const Operands& x, double factor, LinearTerms& to) {
    if (!to.isConstant(x.indexOf(1))) return false;
    to.addTerm(x.indexOf(0), factor / to.numberOf(x.indexOf(1)));
    return true;
}

inline MaybeStep divInverse(const InverseOperands& x, const Goal& goal) {
    const double t = goal.number;
    const ExpressionIndex a = x.indexOf(0);
    const ExpressionIndex b = x.indexOf(1);
    if (x.movesFirst(a, b)) return InverseStep{a, Goal::ofNumber(t * x.numberOf(b), 0)};
    if (t == 0.0) return std::nullopt;
    return InverseStep{b, Goal::ofNumber(x.numberOf(a) / t, 0)};
}

constexpr OperatorRow div{.op = LS_OP_DIV,
                          .value = divValue,
                          .slope = divSlope,
                          .image = divImage,
                          .narrowing = divNarrowing,
                          .curvature = divCurvature,
                          .linear = divLinear,
                          .inverse = divInverse};

inline Value modValue(const ValueOperands& x) {
    const Value a = x[0];
    const Value b = x[1];
    if (!b.isTrue()) return notANumber;
    if (!a.isInt() || !b.isInt()) return Value::ofDouble(std::fmod(a.asDouble(), b.asDouble()));
    // The smallest integer divided by -1 has no 64-bit quotient.
    return Value::ofInt(b.asInt() == -1 ? 0 : a.asInt() % b.asInt());
}

inline void modSlope(const ValueOperands& x, double weight, Adjoints& to) {
    to.give(x.indexOf(0), weight);
}

/// The remainder has the dividend's sign and is smaller than the divisor.
inline Range modImage(const RangeOperands& x) {
    const Range a = x[0];
    const Range b = x[1];
    const double largest = absolute(b).upper - (x.isInteger() ? 1.0 : 0.0);
    Range r{a.lower >= 0.0 ? 0.0 : std::max(a.lower, -largest),
            a.upper <= 0.0 ? 0.0 : std::min(a.upper, largest), a.mayBeNan || b.mayBeNan};
    r.mayBeNan = r.mayBeNan || b.contains(0.0) || std::isinf(a.lower) || std::isinf(a.upper);
    return widened(r, 1.0);
}

inline MaybeStep modInverse(const InverseOperands& x, const Goal& goal) {
    return InverseStep{x.indexOf(0),
                       Goal::ofNumber(x.number(0) + goal.number - x.ownNumber(), goal.direction)};
}

constexpr OperatorRow mod{.op = LS_OP_MOD,
                          .value = modValue,
                          .slope = modSlope,
                          .image = modImage,
                          .narrowing = numbersOnly,
                          .inverse = modInverse};

}  // namespace engine::products
