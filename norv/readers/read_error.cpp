#include "readers/read_error.hpp"

namespace norv {

std::string complaint(const std::string& path, Place place, std::string_view message) {
    std::string line = path;
    line += ':' + std::to_string(place.line) + ':' + std::to_string(place.column) + ": ";
    line += message;
    return line;
}

std::string quoted(std::string_view text) {
    constexpr std::size_t longest = 60;
    constexpr const char* digits = "0123456789abcdef";
    std::string result = "\"";
    for (const char character : text.substr(0, longest)) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte >= 0x20 && byte < 0x7f) {
            result += character;
        } else {
            result += "\\x";
            result += digits[byte >> 4U];
            result += digits[byte & 15U];
        }
    }
    if (text.size() > longest) result += "...";
    return result + '"';
}

}  // namespace norv
