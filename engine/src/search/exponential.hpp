#pragma once

#include <cmath>
#include <limits>
#include <numbers>

namespace engine {

/// e^x from additions, multiplications and a scaling alone, which give the same digits on every
/// platform; those of std::exp differ between the C libraries, and the search's own decisions must
/// not. Relative error below 1e-15 times max(1, |x|). 0 below x = -700, infinite above 700.
///
/// Reduced by multiples of ln 2 in two parts, then Taylor's polynomial: Cody & Waite, Software
/// Manual for the Elementary Functions (1980), chapter 6, with another polynomial.
inline double exponential(double x) {
    constexpr double reach = 700.0;
    constexpr double ln2High = 0x1.62e42fee00000p-1;  // times a multiplier below 2^20: exact
    constexpr double ln2Low = 0x1.a39ef35793c76p-33;
    constexpr int degree = 13;  // |r| <= ln(2) / 2 leaves out less than 1e-17
    if (!(x > -reach)) return 0.0;
    if (x > reach) return std::numeric_limits<double>::infinity();
    const double multiplier = std::floor(x * std::numbers::log2e + 0.5);
    const double r = (x - multiplier * ln2High) - multiplier * ln2Low;
    double sum = 1.0;
    for (int n = degree; n >= 1; --n) sum = 1.0 + sum * (r / n);
    return std::ldexp(sum, static_cast<int>(multiplier));
}

/// 10^x, likewise.
inline double powerOfTen(double x) {
    return exponential(x * std::numbers::ln10);
}

}  // namespace engine
