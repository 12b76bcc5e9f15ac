#pragma once

#include <string>

namespace norv {

/// A number as a user reads it back without loss: the shortest text that gives the same double.
[[nodiscard]] std::string numberText(double value);
/// A number for people, with at most so many significant digits.
[[nodiscard]] std::string numberText(double value, int nbDigits);

}  // namespace norv
