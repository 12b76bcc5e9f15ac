#pragma once

#include <string_view>

namespace norv {

enum class NumberFault { none, notANumber, outOfRange };

struct NumberText {
    double value;
    NumberFault fault;
};

/// The number that `text` spells, all of it: decimal, with a leading + and the exponent letters
/// e, E, d and D allowed. Infinities are spelt "inf" or "infinity" in any case; whether one is
/// welcome is the caller's business. A value too large for a double, or too small for one but not
/// zero, is out of range. Negative zero becomes zero. Independent of the locale.
NumberText parseNumber(std::string_view text);

}  // namespace norv
