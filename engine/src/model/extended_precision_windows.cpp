#include "model/extended_precision.hpp"

namespace engine {

namespace {

// The C library's own functions for this refuse to change the precision of 64-bit programs.
std::uint16_t controlWord() {
    std::uint16_t word = 0;
    __asm__ volatile("fnstcw %0" : "=m"(word));
    return word;
}

void setControlWord(std::uint16_t word) {
    __asm__ volatile("fldcw %0" : : "m"(word));
}

}  // namespace

ExtendedPrecision::ExtendedPrecision() : before_(controlWord()) {
    constexpr std::uint16_t fullPrecision = 0x0300;
    setControlWord(static_cast<std::uint16_t>(before_ | fullPrecision));
}

ExtendedPrecision::~ExtendedPrecision() {
    setControlWord(before_);
}

}  // namespace engine
