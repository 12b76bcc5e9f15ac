#include "diag/number_text.hpp"

#include <array>
#include <charconv>
#include <cmath>

namespace vex {

namespace {

std::string text(double value, std::chars_format format, int digits) {
    // Signs of not-a-numbers carry nothing and differ between processors.
    if (std::isnan(value)) return "nan";
    std::array<char, 64> buffer;  // "-d.<17 digits>e-ddd" has at most 25 characters
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, format, digits).ptr;
    return {buffer.data(), end};
}

}  // namespace

std::string scientificText(double value, int digits, std::size_t width) {
    std::string number = text(value, std::chars_format::scientific, digits);
    if (number.size() < width) number.insert(0, width - number.size(), ' ');
    return number;
}

std::string generalText(double value, int digits) {
    return text(value, std::chars_format::general, digits);
}

}  // namespace vex
