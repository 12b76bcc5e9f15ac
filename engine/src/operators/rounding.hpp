#pragma once

#include <cstdint>

#include "operators/operator_row.hpp"

/// ceil, floor, round.
namespace engine::rounding {

/// An integral double as an integer when it fits.
inline Value integral(double d) {
    constexpr double bound = 9223372036854775808.0;  // 2^63
    if (d >= -bound && d < bound) return Value::ofInt(static_cast<std::int64_t>(d));
    return Value::ofDouble(d);
}

template <double (*rule)(double)>
Value value(const ValueOperands& x) {
    return x[0].isInt() ? x[0] : integral(rule(x.number(0)));
}

template <double (*rule)(double)>
Range image(const RangeOperands& x) {
    return {rule(x[0].lower), rule(x[0].upper), x[0].mayBeNan};
}

/// Wanted of the argument what is wanted of the result.
inline MaybeStep inverse(const InverseOperands& x, const Goal& goal) {
    return InverseStep{x.indexOf(0), goal};
}

inline double nextUp(double d) {
    return std::nextafter(d, HUGE_VAL);
}
inline double nextDown(double d) {
    return std::nextafter(d, -HUGE_VAL);
}

inline double up(double d) {
    return std::ceil(d);
}
inline void ceilNarrowing(const NarrowingStep& x) {
    x.restrict(0, x.own().lower - 1.0, x.own().upper);
}
inline Interval ceilCell(double d) {
    const double whole = up(d);
    return {nextUp(whole - 1.0), whole};
}

constexpr OperatorRow ceil{.op = LS_OP_CEIL,
                           .value = value<up>,
                           .image = image<up>,
                           .narrowing = ceilNarrowing,
                           .inverse = inverse,
                           .cell = ceilCell};

inline double down(double d) {
    return std::floor(d);
}
inline void floorNarrowing(const NarrowingStep& x) {
    x.restrict(0, x.own().lower, x.own().upper + 1.0);
}
inline Interval floorCell(double d) {
    return {down(d), nextDown(down(d) + 1.0)};
}

constexpr OperatorRow floor{.op = LS_OP_FLOOR,
                            .value = value<down>,
                            .image = image<down>,
                            .narrowing = floorNarrowing,
                            .inverse = inverse,
                            .cell = floorCell};

inline double nearest(double d) {
    return std::round(d);
}
inline void roundNarrowing(const NarrowingStep& x) {
    x.restrict(0, below(x.own().lower - 0.5), above(x.own().upper + 0.5));
}
inline Interval roundCell(double d) {
    const double whole = nearest(d);
    return {whole > 0.0 ? whole - 0.5 : nextUp(whole - 0.5),
            whole < 0.0 ? whole + 0.5 : nextDown(whole + 0.5)};
}

constexpr OperatorRow round{.op = LS_OP_ROUND,
                            .value = value<nearest>,
                            .image = image<nearest>,
                            .narrowing = roundNarrowing,
                            .inverse = inverse,
                            .cell = roundCell};

}  // namespace engine::rounding
