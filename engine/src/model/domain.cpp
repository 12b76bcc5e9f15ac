#include "model/domain.hpp"

#include <algorithm>
#include <cmath>

namespace engine {

namespace {

constexpr double smallestInteger = -0x1p63;
/// The largest double below 2^63.
constexpr double largestInteger = 0x1.fffffffffffffp62;

/// Rounds towards plus infinity, also where the integer has more than 53 bits.
double ceilingOf(Value bound) {
    if (!bound.isInt()) return std::ceil(bound.asDouble());
    const double rounded = bound.asDouble();
    // 2^63 itself is no 64-bit integer: the conversion back must not see it.
    if (rounded > largestInteger) return rounded;
    const bool below = static_cast<std::int64_t>(rounded) < bound.asInt();
    return below ? std::nextafter(rounded, HUGE_VAL) : rounded;
}

double floorOf(Value bound) {
    if (!bound.isInt()) return std::floor(bound.asDouble());
    const double rounded = bound.asDouble();
    if (rounded > largestInteger) return largestInteger;
    const bool above = static_cast<std::int64_t>(rounded) > bound.asInt();
    return above ? std::nextafter(rounded, -HUGE_VAL) : rounded;
}

}  // namespace

Value nearestValue(Value wanted, const Interval& domain, bool discrete) {
    if (!discrete) {
        const double x = std::isnan(wanted.asDouble()) ? 0.0 : wanted.asDouble();
        return Value::ofDouble(std::max(domain.lower, std::min(x, domain.upper)));
    }
    const auto lower = static_cast<std::int64_t>(domain.lower);
    const auto upper = static_cast<std::int64_t>(domain.upper);
    if (wanted.isInt()) return Value::ofInt(std::max(lower, std::min(wanted.asInt(), upper)));
    const double x = std::isnan(wanted.asDouble()) ? 0.0 : std::round(wanted.asDouble());
    const double clamped = std::max(domain.lower, std::min(x, domain.upper));
    return Value::ofInt(static_cast<std::int64_t>(clamped));
}

Value valueFor(const ClosedModel& model, DecisionIndex d, double value) {
    return model.isDiscrete(d) ? Value::ofInt(static_cast<std::int64_t>(value))
                               : Value::ofDouble(value);
}

Interval domainFromBounds(Value lower, Value upper, bool discrete) {
    if (!discrete) return {lower.asDouble(), upper.asDouble()};
    const Interval domain{std::max(ceilingOf(lower), smallestInteger),
                          std::min(floorOf(upper), largestInteger)};
    return domain.isEmpty() ? Interval{1.0, 0.0} : domain;
}

}  // namespace engine
