#pragma once

#include <cstddef>
#include <string>

/// Numbers as text, the same on every platform: no locale, no C run-time library, two exponent
/// digits unless three are needed, infinities as "inf" and not-a-numbers as "nan".

namespace vex {

/// As printf's "%<width>.<digits>e": `digits` after the point, blanks in front up to `width`.
[[nodiscard]] std::string scientificText(double value, int digits, std::size_t width);

/// As printf's "%.<digits>g": at most `digits` significant digits, 1 <= digits <= 17.
[[nodiscard]] std::string generalText(double value, int digits);

}  // namespace vex
