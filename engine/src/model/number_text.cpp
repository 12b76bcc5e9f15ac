#include "model/number_text.hpp"

#include <array>
#include <charconv>
#include <cmath>

namespace engine {

std::string numberText(Value value) {
    // The sign of NaN means nothing, and to_chars would write it.
    if (std::isnan(value.asDouble())) return "nan";
    std::array<char, 32> text{};
    char* const end = text.data() + text.size();
    const auto written = value.isInt() ? std::to_chars(text.data(), end, value.asInt())
                                       : std::to_chars(text.data(), end, value.asDouble());
    return {text.data(), written.ptr};
}

}  // namespace engine
