#pragma once

#include <optional>
#include <span>
#include <vector>

#include "evaluate/evaluator.hpp"

namespace engine {

/// sign * (left - right) + shift <= 0, or = 0, in units of `scale`.
struct Restriction {
    static constexpr ExpressionIndex nothing = -1;

    ExpressionIndex left;
    ExpressionIndex right;  ///< or `nothing`, which stands for 0
    double sign;
    double scale;
    double shift;  ///< how far beyond the border a strict relation has to be
    bool isEquation;

    /// The scaled amount by which it is exceeded, negative inside. @param values  of all
    /// expressions.
    [[nodiscard]] double excess(std::span<const Value> values) const {
        const auto number = [values](ExpressionIndex e) {
            return e == nothing ? 0.0 : values[static_cast<std::size_t>(e)].asDouble();
        };
        return (sign * (number(left) - number(right)) + shift) / scale;
    }
};

/// The relations that the constraints ask for at the evaluator's point: both operands of an `and`,
/// the nearest operand of an `or`, the nearer side of a `neq`. Constraints that are no relations
/// are left out, and so are those that no decision can change.
std::vector<Restriction> restrictionsAt(const Evaluator& evaluator);

/// What keeps every piece that the point `values` [nbExpressions] lies on: the relations that stand
/// inside other expressions keep their truth, without the help of the tolerance where it could
/// help, and what is rounded keeps its whole value. Relations between integers are left out.
std::vector<Restriction> guardsAt(const Plan& plan, std::span<const Value> values);

/// The expressions that the restrictions compare.
std::vector<ExpressionIndex> sidesOf(std::span<const Restriction> restrictions);

}  // namespace engine
