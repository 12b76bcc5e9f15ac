#pragma once

#include <cmath>
#include <utility>
#include <vector>

#include "model/closed_model.hpp"

namespace engine {

/// The weights of reverse accumulation, one an expression: what an operator passes on to its
/// operands is its own weight times the partial derivatives.
class Adjoints {
public:
    explicit Adjoints(std::size_t nbExpressions) : adjoint_(nbExpressions, 0.0) {}

    void clear() { adjoint_.assign(adjoint_.size(), 0.0); }
    [[nodiscard]] double of(ExpressionIndex e) const {
        return adjoint_[static_cast<std::size_t>(e)];
    }
    double take(ExpressionIndex e) {
        return std::exchange(adjoint_[static_cast<std::size_t>(e)], 0.0);
    }
    void add(ExpressionIndex e, double weight) { adjoint_[static_cast<std::size_t>(e)] += weight; }
    /// The same, but what is not finite is left out and remembered as missing.
    void give(ExpressionIndex e, double weight) {
        if (std::isfinite(weight)) {
            add(e, weight);
        } else {
            isComplete_ = false;
        }
    }
    /// Whether nothing was left out since the last question.
    bool takeCompleteness() { return std::exchange(isComplete_, true); }

    std::vector<double> scratch;  ///< for an operator's use while it passes on

private:
    std::vector<double> adjoint_;
    bool isComplete_ = true;
};

}  // namespace engine
