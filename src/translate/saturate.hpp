#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace vex {

/// `value` truncated toward zero and moved into the range of Integer; not-a-number becomes the
/// largest, as a limit that nobody set.
template <class Integer>
[[nodiscard]] Integer saturate(double value) {
    using Limits = std::numeric_limits<Integer>;
    // 2^digits is exact as a double, the largest integer itself may not be.
    const double beyond = std::ldexp(1.0, Limits::digits);
    if (!(value < beyond)) return Limits::max();
    if (value < -beyond) return Limits::min();
    return static_cast<Integer>(value);
}

/// Is `value` a whole number in the range of 64-bit integers? Infinities and not-a-numbers are not.
[[nodiscard]] inline bool isIntegral(double value) {
    const double beyond = std::ldexp(1.0, 63);
    return value >= -beyond && value < beyond && std::trunc(value) == value;
}

}  // namespace vex
