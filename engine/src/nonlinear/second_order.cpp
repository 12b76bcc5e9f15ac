#include "nonlinear/second_order.hpp"

#include <cmath>
#include <limits>

namespace engine {
namespace {

/// The product by the rule that an exact 0 makes 0 of anything: 0 times the derivative of a root
/// at 0, for instance.
double times(double a, double b) {
    return a == 0.0 || b == 0.0 ? 0.0 : a * b;
}

}  // namespace

LocalDerivatives productRule(double a, double b) {
    return {.value = times(a, b), .byA = b, .byB = a, .byAA = 0.0, .byAB = 1.0, .byBB = 0.0};
}

LocalDerivatives squareRule(double a, double /*b*/) {
    return {.value = a * a, .byA = 2.0 * a, .byAA = 2.0};
}

LocalDerivatives quotientRule(double a, double b) {
    const double value = a / b;
    return {.value = b == 0.0 ? std::numeric_limits<double>::quiet_NaN() : value,
            .byA = 1.0 / b,
            .byB = -value / b,
            .byAA = 0.0,
            .byAB = -1.0 / (b * b),
            .byBB = 2.0 * value / (b * b)};
}

LocalDerivatives powerRule(double a, double b) {
    LocalDerivatives d;
    d.value = std::pow(a, b);
    d.byA = times(b, std::pow(a, b - 1.0));
    d.byAA = times(b * (b - 1.0), std::pow(a, b - 2.0));
    if (a > 0.0) {
        const double log = std::log(a);
        d.byB = d.value * log;
        d.byAB = std::pow(a, b - 1.0) * (1.0 + b * log);
        d.byBB = d.byB * log;
    }
    return d;
}

LocalDerivatives largerRule(double a, double b) {
    // Written so that a NaN on either side is passed on.
    const bool isFirst = a >= b || std::isnan(a);
    return {.value = isFirst ? a : b, .byA = isFirst ? 1.0 : 0.0, .byB = isFirst ? 0.0 : 1.0};
}

LocalDerivatives smallerRule(double a, double b) {
    const bool isFirst = a <= b || std::isnan(a);
    return {.value = isFirst ? a : b, .byA = isFirst ? 1.0 : 0.0, .byB = isFirst ? 0.0 : 1.0};
}

LocalDerivatives distanceRule(double a, double b) {
    const double sign = a < b ? -1.0 : 1.0;
    return {.value = std::fabs(a - b), .byA = sign, .byB = -sign};
}

LocalDerivatives remainderRule(double a, double b) {
    return {.value = std::fmod(a, b), .byA = 1.0, .byB = -std::trunc(a / b)};
}

LocalDerivatives absoluteRule(double a, double /*b*/) {
    return {.value = std::fabs(a), .byA = a < 0.0 ? -1.0 : 1.0};
}

LocalDerivatives rootRule(double a, double /*b*/) {
    const double root = std::sqrt(a);
    return {.value = root, .byA = 0.5 / root, .byAA = -0.25 / (a * root)};
}

LocalDerivatives logarithmRule(double a, double /*b*/) {
    const double value = a > 0.0 ? std::log(a) : std::numeric_limits<double>::quiet_NaN();
    return {.value = value, .byA = 1.0 / a, .byAA = -1.0 / (a * a)};
}

LocalDerivatives exponentialRule(double a, double /*b*/) {
    const double value = std::exp(a);
    return {.value = value, .byA = value, .byAA = value};
}

LocalDerivatives cosineRule(double a, double /*b*/) {
    const double value = std::cos(a);
    return {.value = value, .byA = -std::sin(a), .byAA = -value};
}

LocalDerivatives sineRule(double a, double /*b*/) {
    const double value = std::sin(a);
    return {.value = value, .byA = std::cos(a), .byAA = -value};
}

LocalDerivatives tangentRule(double a, double /*b*/) {
    const double value = std::tan(a);
    const double slope = 1.0 + value * value;
    return {.value = value, .byA = slope, .byAA = 2.0 * value * slope};
}

}  // namespace engine
