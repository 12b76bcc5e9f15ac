#pragma once

#include <cstdint>

/// The questions that the host asks about the link before it uses it: does it speak my interface
/// version, and does it have an entry point with these arguments? Only `vexReadyAPI` and
/// `vexCallSolver` can be asked about. Neither allocates nor throws.

namespace vex {

/// Longest message, and longest name in the length-prefixed form, in characters.
constexpr std::int32_t longestAnswer = 255;

/// The link's word on a question.
struct Answer {
    std::int32_t accepted = 0;          ///< 1 or 0
    char message[longestAnswer + 1]{};  ///< terminated, cut; empty when there is nothing to say
};

/// The link's own interface version is 1.
/// @param api            the host's version.
/// @param compatibility  receives 0 (too old), 1 (same) or 3 (the host's is newer); may be null.
[[nodiscard]] Answer answerVersion(std::int32_t api, std::int32_t* compatibility);

/// @param name         exact, case counts; null counts as empty.
/// @param nbArguments  without the link object.
/// @param signature    [nbArguments + 1] type codes, the result's first.
[[nodiscard]] Answer answerSignature(const char* name, std::int32_t nbArguments,
                                     const std::int32_t* signature);

/// Copies text and terminator, nothing beyond; does nothing when `message` is null.
void storeTerminated(const char* text, char* message);

/// Stores a length byte and that many characters, no terminator; nothing when `message` is null.
void storePrefixed(const char* text, unsigned char* message);

/// A length-prefixed text as an ordinary string; null counts as empty.
struct Unprefixed {
    explicit Unprefixed(const unsigned char* prefixed);
    char text[longestAnswer + 1]{};
};

}  // namespace vex
