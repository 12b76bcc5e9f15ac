#pragma once

#include <cstddef>
#include <cstring>
#include <string>

namespace vex {

/// Fetches a text of the optimizer in two calls.
/// @param fetch  fetch(text, length) is one of the optimizer's functions with its leading arguments
///               bound; with no text and length 0 it returns the number of characters to make room
///               for.
/// @return the text up to its terminator, or all of it when it comes without one.
template <class Fetch>
[[nodiscard]] std::string fetchText(Fetch fetch) {
    const int length = fetch(nullptr, 0);
    if (length <= 0) return {};
    std::string text(static_cast<std::size_t>(length), '\0');
    fetch(text.data(), length);
    text.resize(std::strlen(text.c_str()));
    return text;
}

}  // namespace vex
