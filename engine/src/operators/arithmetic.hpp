#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "model/value.hpp"

namespace engine {

/// A domain error, or a result beyond the doubles.
constexpr Value notANumber = Value::ofDouble(std::numeric_limits<double>::quiet_NaN());

/// 0 to a negative power: a NaN that a product with an exact 0 forgives. A bit pattern of its own,
/// so that a change from one NaN to the other counts as a change.
constexpr std::uint64_t poleBits = std::bit_cast<std::uint64_t>(notANumber.asDouble()) + 1;
constexpr Value pole = Value::ofDouble(std::bit_cast<double>(poleBits));

inline bool isNan(Value v) {
    return !v.isInt() && std::isnan(v.asDouble());
}
inline bool isPole(Value v) {
    return !v.isInt() && std::bit_cast<std::uint64_t>(v.asDouble()) == poleBits;
}
/// No number, and no pole either.
inline bool spoilsProducts(Value v) {
    return isNan(v) && !isPole(v);
}
inline Value ofBool(bool b) {
    return Value::ofInt(b ? 1 : 0);
}

/// -1, 0 or 1 by numerical order, exact between integers; 0 when a side is NaN.
inline int compare(Value a, Value b) {
    if (a.isInt() && b.isInt()) return (a.asInt() > b.asInt()) - (a.asInt() < b.asInt());
    return (a.asDouble() > b.asDouble()) - (a.asDouble() < b.asDouble());
}

inline Value subtract(Value a, Value b) {
    std::int64_t exact = 0;
    if (a.isInt() && b.isInt() && !__builtin_sub_overflow(a.asInt(), b.asInt(), &exact)) {
        return Value::ofInt(exact);
    }
    return Value::ofDouble(a.asDouble() - b.asDouble());
}

inline Value multiply(Value a, Value b) {
    std::int64_t exact = 0;
    if (a.isInt() && b.isInt() && !__builtin_mul_overflow(a.asInt(), b.asInt(), &exact)) {
        return Value::ofInt(exact);
    }
    const double x = a.asDouble();
    const double y = b.asDouble();
    if ((x == 0.0 && !spoilsProducts(b)) || (y == 0.0 && !spoilsProducts(a))) {
        return Value::ofDouble(0.0);
    }
    return Value::ofDouble(x * y);
}

/// How far two sides may differ and still count as equal: 0 between integers and when a side is
/// infinite.
inline double toleranceBetween(Value left, Value right) {
    if (left.isInt() && right.isInt()) return 0.0;
    const double larger = std::fmax(std::fabs(left.asDouble()), std::fabs(right.asDouble()));
    return std::isinf(larger) ? 0.0 : relationTolerance * std::fmax(1.0, larger);
}

/// The absolute value of an integer, where 64 bits hold it, is an integer.
inline Value absolute(Value v) {
    if (!v.isInt()) return Value::ofDouble(std::fabs(v.asDouble()));
    return v.asInt() < 0 ? subtract(Value::ofInt(0), v) : v;
}

}  // namespace engine
