#include "solve/number_text.hpp"

#include <charconv>

namespace norv {

std::string numberText(double value) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

std::string numberText(double value, int nbDigits) {
    char text[32];
    return {
        text,
        std::to_chars(text, text + sizeof text, value, std::chars_format::general, nbDigits).ptr};
}

}  // namespace norv
