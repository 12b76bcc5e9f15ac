#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "hostapi/codes.hpp"

namespace norv {

/// Writes `text` and its terminator into `buffer`, cut to the room there is.
/// @param buffer    null: nothing happens.
/// @param capacity  characters with the terminator; at least 1.
/// @return `buffer`.
inline char* writeText(char* buffer, std::size_t capacity, std::string_view text) noexcept {
    if (buffer == nullptr) return nullptr;
    const std::size_t length = std::min(text.size(), capacity - 1);
    *std::copy_n(text.data(), length, buffer) = '\0';
    return buffer;
}

/// The same for the host's text results, which have room for `longestText` characters.
inline char* writeText(char* buffer, std::string_view text) noexcept {
    return writeText(buffer, static_cast<std::size_t>(hostapi::longestText) + 1, text);
}

}  // namespace norv
