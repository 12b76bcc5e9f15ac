#pragma once

#include <algorithm>
#include <string_view>

namespace norv {

/// ASCII only: names are compared the same way whatever the user's locale.
constexpr char lowerCase(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Equal but for the case of ASCII letters?
constexpr bool sameName(std::string_view a, std::string_view b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lowerCase(x) == lowerCase(y); });
}

}  // namespace norv
