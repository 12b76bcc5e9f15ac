#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "operators/operands.hpp"

namespace engine {

enum class Curvature : std::uint8_t { Constant, Affine, Convex, Concave, Unknown };

/// What the composition rules of disciplined convex programming (Grant, Boyd and Ye, "Disciplined
/// convex programming", in: Global Optimization, 2006) tell about an expression, as a function of
/// decisions that move as real numbers within their domains, wherever it is defined. Beside the
/// rules, a sum of squares and products of decisions is convex when its matrix is positive
/// semidefinite.
struct CurvatureOfExpression {
    Curvature curvature = Curvature::Unknown;
    /// Seen on the sum as a whole only; its terms alone tell less.
    bool isWhole = false;
};

constexpr bool isAffine(Curvature c) {
    return c == Curvature::Constant || c == Curvature::Affine;
}
constexpr bool isConvex(Curvature c) {
    return isAffine(c) || c == Curvature::Convex;
}
constexpr bool isConcave(Curvature c) {
    return isAffine(c) || c == Curvature::Concave;
}
constexpr Curvature flipped(Curvature c) {
    if (c == Curvature::Convex) return Curvature::Concave;
    return c == Curvature::Concave ? Curvature::Convex : c;
}
constexpr Curvature added(Curvature a, Curvature b) {
    if (a == Curvature::Constant) return b;
    if (b == Curvature::Constant || a == b) return a;
    if (a == Curvature::Unknown || b == Curvature::Unknown) return Curvature::Unknown;
    if (a == Curvature::Affine) return b;
    return b == Curvature::Affine ? a : Curvature::Unknown;
}
constexpr Curvature convexIf(bool condition) {
    return condition ? Curvature::Convex : Curvature::Unknown;
}
constexpr Curvature concaveIf(bool condition) {
    return condition ? Curvature::Concave : Curvature::Unknown;
}

/// The operands' curvatures, ranges and, where they are constant, values.
class CurvatureOperands : public ValueOperands {
public:
    /// @param curvatures  [nbExpressions], known of the operands.
    CurvatureOperands(const ClosedModel& model, ExpressionIndex e, std::span<const Value> values,
                      std::span<const CurvatureOfExpression> curvatures, const RangeStore& ranges)
        : ValueOperands(model, e, values), curvatures_(curvatures), ranges_(ranges) {}

    [[nodiscard]] Curvature curvature(std::size_t k) const {
        return curvatures_[static_cast<std::size_t>(indexOf(k))].curvature;
    }
    [[nodiscard]] bool isConstant(std::size_t k) const {
        return curvature(k) == Curvature::Constant;
    }
    [[nodiscard]] Range range(std::size_t k) const { return ranges_.of(indexOf(k)); }
    [[nodiscard]] bool all(bool (*holds)(Curvature)) const {
        return std::all_of(indices().begin(), indices().end(), [&](ExpressionIndex e) {
            return holds(curvatures_[static_cast<std::size_t>(e)].curvature);
        });
    }

private:
    std::span<const CurvatureOfExpression> curvatures_;
    const RangeStore& ranges_;
};

}  // namespace engine
