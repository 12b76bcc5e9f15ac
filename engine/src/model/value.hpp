#pragma once

#include <cstdint>

#include "model/tolerances.hpp"

namespace engine {

/// A 64-bit integer or a double. Integer arithmetic that would overflow yields a double
/// (arithmetic in evaluate/).
class Value {
public:
    constexpr Value() = default;
    static constexpr Value ofInt(std::int64_t i) {
        Value v;
        v.whole = i;
        return v;
    }
    static constexpr Value ofDouble(double d) {
        Value v;
        v.real = d;
        v.isInt_ = false;
        return v;
    }

    [[nodiscard]] constexpr bool isInt() const { return isInt_; }
    /// Only when isInt().
    [[nodiscard]] constexpr std::int64_t asInt() const { return whole; }
    /// Rounded to the nearest double when the integer has more than 53 bits.
    [[nodiscard]] constexpr double asDouble() const {
        return isInt_ ? static_cast<double>(whole) : real;
    }
    /// Nonzero is true; NaN is not.
    [[nodiscard]] constexpr bool isTrue() const {
        return isInt_ ? whole != 0 : (real < 0.0 || real > 0.0);
    }

private:
    union {
        std::int64_t whole = 0;
        double real;
    };
    bool isInt_ = true;
};

}  // namespace engine
