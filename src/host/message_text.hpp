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
        : buffer_(length > 0 ? callersBuffer : nullptr),
          room_(buffer_ != nullptr ? static_cast<std::size_t>(length) - 1 : 0) {
        if (buffer_ != nullptr) buffer_[room_] = '\0';
    }

    void clear() {
        size_ = 0;
        if (buffer_ != nullptr) buffer_[0] = '\0';
    }

    MessageText& operator<<(std::string_view piece) {
        if (buffer_ == nullptr) return *this;
        const std::size_t nbCopied = std::min(piece.size(), room_ - size_);
        std::copy_n(piece.data(), nbCopied, buffer_ + size_);
        size_ += nbCopied;
        buffer_[size_] = '\0';
        return *this;
    }

private:
    char* buffer_;
    std::size_t room_;      ///< characters without the terminator
    std::size_t size_ = 0;  ///< characters written, at most room
};

}  // namespace vex
