#pragma once

#include <cmath>
#include <cstdint>

namespace norv {

/// A value and what went wrong on the way to it.
///
/// An operation adds up the errors of its operands, and one of its own when its result is no
/// finite number: a domain error, a division by zero or an overflow. Errors of an operand that has
/// no say are dropped: the branch not taken, the other side of a conjunction with a false one.
struct Quantity {
    double value = 0.0;
    std::int32_t nbErrors = 0;
};

/// Saturates: a list of any length may fail in every instruction.
constexpr std::int32_t sumOfErrors(std::int32_t a, std::int32_t b) {
    const std::int64_t sum = std::int64_t{a} + b;
    return sum > INT32_MAX ? INT32_MAX : static_cast<std::int32_t>(sum);
}

/// `value` as the result of an operation whose operands had `nbErrors` errors.
inline Quantity resultOf(double value, std::int32_t nbErrors) {
    return {value, std::isfinite(value) ? nbErrors : sumOfErrors(nbErrors, 1)};
}

/// In a product an exact 0 times an infinity is 0.
inline double multiply(double a, double b) {
    const bool isZero = (a == 0.0 && !std::isnan(b)) || (b == 0.0 && !std::isnan(a));
    return isZero ? 0.0 : a * b;
}

}  // namespace norv
