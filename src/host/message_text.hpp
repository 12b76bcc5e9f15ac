#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vex {

/// Composes a message piece by piece in a caller's buffer: each piece is cut to the room left and
/// the buffer always ends in a terminator. Without room (null, or length below 1) it does nothing.
class MessageText {
public:
    /// Borrows `callersBuffer` [length], ends it at its last character, and leaves the text before
    /// that as it is until `clear` or the first piece.
    MessageText(char* callersBuffer, std::int32_t length)
        : buffer(length > 0 ? callersBuffer : nullptr),
          room(buffer != nullptr ? static_cast<std::size_t>(length) - 1 : 0) {
        if (buffer != nullptr) buffer[room] = '\0';
    }

    void clear() {
        size = 0;
        if (buffer != nullptr) buffer[0] = '\0';
    }

    MessageText& operator<<(std::string_view piece) {
        if (buffer == nullptr) return *this;
        const std::size_t nbCopied = std::min(piece.size(), room - size);
        std::copy_n(piece.data(), nbCopied, buffer + size);
        size += nbCopied;
        buffer[size] = '\0';
        return *this;
    }

private:
    char* buffer;
    std::size_t room;      ///< characters without the terminator
    std::size_t size = 0;  ///< characters written, at most room
};

}  // namespace vex
