#pragma once

#include <optional>
#include <vector>

#include "nonlinear/expression.hpp"

namespace norv {

/// coefficient * variable, the variable from 0.
struct LinearTerm {
    std::int32_t variable;
    double coefficient;
};

/// coefficient * first * second
struct QuadraticTerm {
    std::int32_t first;
    std::int32_t second;
    double coefficient;
};

/// Terms in the order in which they were met; variables and pairs may come repeatedly.
struct QuadraticForm {
    double constant = 0.0;
    std::vector<LinearTerm> linear;
    std::vector<QuadraticTerm> quadratic;
};

/// `root` as a quadratic polynomial, when it is one by its look: sums, multiples, and products and
/// squares of linear expressions, multiplied out. Nothing when it is none, when a coefficient
/// overflows, or when multiplying out a product would make it ten times as long.
///
/// O(size of `root` with shared nodes written out for each use).
[[nodiscard]] std::optional<QuadraticForm> findQuadraticForm(const ExpressionStore& store,
                                                             NodeIndex root);

}  // namespace norv
