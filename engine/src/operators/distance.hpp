#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>

#include "operators/operands.hpp"

namespace engine {

/// How far an expression is from being true and from being false, each 0 when it is so already.
/// One of the two is positive, both when the value is NaN; finite, at most `farAway`.
struct Distance {
    double toTrue = 0.0;
    double toFalse = 0.0;

    /// Positive: violated, negative: the slack. Linear across the border of a linear inequality.
    [[nodiscard]] double margin() const { return toTrue > 0.0 ? toTrue : -toFalse; }
};

constexpr double farAway = 1e12;
/// The least distance from a truth value that is to change.
constexpr double nearestDistance = 1e-9;

inline double boundedDistance(double distance) {
    return std::isnan(distance) ? farAway : std::clamp(distance, nearestDistance, farAway);
}

/// Distance of a number that stands where a truth value is expected.
inline Distance distanceOfNumber(Value v) {
    const double number = v.asDouble();
    if (std::isnan(number)) return {farAway, farAway};
    return v.isTrue() ? Distance{0.0, boundedDistance(std::fabs(number))} : Distance{1.0, 0.0};
}

/// The operands' values and, below a connective, their distances.
class DistanceOperands : public ValueOperands {
public:
    /// @param distances  at the position that `positionOf` [nbExpressions] gives an expression.
    /// @param scale      unit of a relation's gap, > 0.
    DistanceOperands(const ClosedModel& model, ExpressionIndex e, std::span<const Value> values,
                     std::span<const Distance> distances, std::span<const std::int32_t> positionOf,
                     double scale)
        : ValueOperands(model, e, values),
          distances_(distances),
          positionOf_(positionOf),
          scale_(scale) {}

    [[nodiscard]] const Distance& distance(std::size_t k) const {
        const std::int32_t position = positionOf_[static_cast<std::size_t>(indexOf(k))];
        return distances_[static_cast<std::size_t>(position)];
    }
    [[nodiscard]] double scale() const { return scale_; }

private:
    std::span<const Distance> distances_;
    std::span<const std::int32_t> positionOf_;
    double scale_;
};

}  // namespace engine
