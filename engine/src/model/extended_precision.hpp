#pragma once

#include <cstdint>

namespace engine {

/// While it lives, `long double` arithmetic on this thread has its full 64 bits.
///
/// Windows starts threads with 53 bits, which is what a host's thread arrives with. The error
/// bounds of the interval sums rest on the full precision, and so do the last digits of the C
/// library's exponentials and powers there: without it they would depend on the host. Restores what
/// was in force. Does nothing on other platforms, where full precision is the rule.
class ExtendedPrecision {
public:
    ExtendedPrecision();
    ~ExtendedPrecision();
    ExtendedPrecision(const ExtendedPrecision&) = delete;
    ExtendedPrecision& operator=(const ExtendedPrecision&) = delete;

private:
    std::uint16_t before_ = 0;  ///< control word of the x87 unit
};

}  // namespace engine
