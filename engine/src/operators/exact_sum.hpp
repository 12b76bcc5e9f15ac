#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "model/value.hpp"

namespace engine {

/// A sum of values from which terms can also be taken away again.
///
/// Integers are added exactly in 128 bits, which 2^31 terms cannot overflow; so the result does not
/// depend on the order of the terms: an integer when all terms are integers and the total fits in
/// 64 bits, else a double. Doubles are kept as an unevaluated pair of two doubles (Knuth's exact
/// two-sum; Dekker 1971), so that millions of additions and removals leave no visible error.
/// Infinities and NaN are counted, not added: removing them restores the finite total. While there
/// are any, and when the total leaves the doubles' range, it is NaN.
class ExactSum {
public:
    void add(Value v) { v.isInt() ? addInt(v.asInt()) : addDouble(v.asDouble(), 1); }
    void remove(Value v) { v.isInt() ? removeInt(v.asInt()) : addDouble(v.asDouble(), -1); }

    [[nodiscard]] Value total() const {
        if (nbDoubles_ == 0) return exactOrDouble();
        return Value::ofDouble(doubleTotal());
    }
    /// The finite partial total itself overflowed; only a sum built anew can be trusted.
    [[nodiscard]] bool isOverflown() const { return !std::isfinite(high_); }

private:
    __extension__ using Int128 = __int128;

    void addInt(std::int64_t i) { integers_ += i; }
    void removeInt(std::int64_t i) { integers_ -= i; }

    void addDouble(double d, int sign) {
        nbDoubles_ += sign;
        if (std::isfinite(d)) {
            addFinite(sign > 0 ? d : -d);
        } else {
            nbUndefined_ += sign;
        }
    }
    void addFinite(double d) {
        const double sum = high_ + d;
        if (!std::isfinite(sum)) {
            high_ = sum;
            low_ = 0.0;
            return;
        }
        const double part = sum - high_;
        low_ += (high_ - (sum - part)) + (d - part);
        // Renormalised, so that the pair stays the nearest double and its remainder.
        high_ = sum + low_;
        low_ -= high_ - sum;
    }
    [[nodiscard]] Value exactOrDouble() const {
        constexpr Int128 smallest = std::numeric_limits<std::int64_t>::min();
        constexpr Int128 largest = std::numeric_limits<std::int64_t>::max();
        if (integers_ < smallest || integers_ > largest) {
            return Value::ofDouble(static_cast<double>(integers_));
        }
        return Value::ofInt(static_cast<std::int64_t>(integers_));
    }
    [[nodiscard]] double doubleTotal() const {
        ExactSum all = *this;
        if (integers_ != 0) all.addFinite(static_cast<double>(integers_));
        const double total = all.high_ + all.low_;
        const bool isDefined = nbUndefined_ == 0 && std::isfinite(total);
        return isDefined ? total : std::numeric_limits<double>::quiet_NaN();
    }

    Int128 integers_ = 0;
    double high_ = 0.0;
    double low_ = 0.0;
    std::int32_t nbDoubles_ = 0;
    std::int32_t nbUndefined_ = 0;  ///< infinities and NaN
};

}  // namespace engine
