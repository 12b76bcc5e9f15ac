#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// Text of definition and option files: words, quotes, comments; and the messages about it.

namespace norv {

/// Types of the option library's messages. The link shows those up to 7 and type 9.
namespace message_type {
constexpr std::int32_t unreadable = 1;  ///< a file cannot be read
constexpr std::int32_t syntax = 2;
constexpr std::int32_t unknownName = 3;
constexpr std::int32_t wrongType = 4;
constexpr std::int32_t outOfRange = 5;
constexpr std::int32_t definition = 6;  ///< a fault of the definition file
constexpr std::int32_t warning = 7;     ///< the line was taken all the same
constexpr std::int32_t summary = 8;     ///< for programs: what a file has brought
constexpr std::int32_t echo = 9;        ///< a line of the option file
}  // namespace message_type

/// A setting or definition that is refused; the text names no place yet.
struct OptionError : std::runtime_error {
    OptionError(std::int32_t messageType, const std::string& text)
        : std::runtime_error(text), type(messageType) {}
    std::int32_t type;
};

/// `text` in quotes for a message: printable, at most 60 characters.
[[nodiscard]] std::string excerpt(std::string_view text);
/// Control characters replaced, so that a message stays one line.
[[nodiscard]] std::string printable(std::string_view text);

/// The words of `line` up to its end or a comment: '#' at the start of a word. Words are separated
/// by blanks and tabs, or stand in single or double quotes, where a doubled quote stands for one.
/// @throws OptionError (syntax) for an open quote and for control characters.
[[nodiscard]] std::vector<std::string> splitWords(std::string_view line);

/// Begins the line a comment, or is it empty?
[[nodiscard]] bool hasNoContent(std::string_view line) noexcept;

/// Takes the next line, without its end (LF or CR LF), off the front of `rest`.
[[nodiscard]] std::string_view takeLine(std::string_view& rest) noexcept;

/// The whole file, without a byte-order mark.
/// @throws OptionError (unreadable) when it cannot be read or is larger than 16 MiB.
[[nodiscard]] std::string readWholeFile(const std::string& path);

}  // namespace norv
