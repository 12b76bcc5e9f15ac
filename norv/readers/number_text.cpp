#include "readers/number_text.hpp"

#include <charconv>
#include <cmath>
#include <system_error>

namespace norv {
namespace {

NumberText convert(std::string_view text) {
    double value = 0.0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error == std::errc::invalid_argument || stop != end || std::isnan(value)) {
        return {0.0, NumberFault::notANumber};
    }
    if (error == std::errc::result_out_of_range) return {0.0, NumberFault::outOfRange};
    return {value + 0.0, NumberFault::none};  // -0.0 + 0.0 is 0.0
}

/// The same text with the exponent letter of older programs replaced.
NumberText convertOldExponent(std::string_view text, std::size_t letter) {
    constexpr std::size_t longest = 64;
    char copy[longest];
    if (text.size() > longest) return {0.0, NumberFault::notANumber};
    text.copy(copy, text.size());
    copy[letter] = 'e';
    return convert({copy, text.size()});
}

}  // namespace

NumberText parseNumber(std::string_view text) {
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    const NumberText direct = convert(text);
    if (direct.fault != NumberFault::notANumber) return direct;
    const std::size_t letter = text.find_first_of("dD");
    return letter == std::string_view::npos ? direct : convertOldExponent(text, letter);
}

}  // namespace norv
