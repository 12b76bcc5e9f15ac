#pragma once

#include <compare>
#include <cstdint>
#include <vector>

#include "model/closed_model.hpp"

namespace engine {

/// A linear function of columns plus a constant.
struct LinearForm {
    std::vector<std::int32_t> column;  ///< no duplicates, no order
    std::vector<double> coefficient;   ///< [column.size()], none is 0
    double constant = 0.0;

    auto operator<=>(const LinearForm&) const = default;
};

struct LinearObjective {
    LinearForm form;
    bool maximise;
};

/// A column that stands for a nonlinear expression, from one side: for a convex expression it is at
/// least as large, for a concave one at most.
struct CurvedColumn {
    std::int32_t column;
    ExpressionIndex expression;
    bool isConvex;
};

/// A mixed-integer linear model: rowLower <= rows <= rowUpper over bounded columns.
struct LinearModel {
    std::vector<double> lower;            ///< [nbColumns]; integral for integer columns
    std::vector<double> upper;            ///< [nbColumns]
    std::vector<std::uint8_t> isInteger;  ///< [nbColumns]
    std::vector<DecisionIndex> decision;  ///< [nbColumns], -1 for an auxiliary column

    std::vector<std::int32_t> rowStart{0};  ///< [nbRows + 1] into column, coefficient
    std::vector<std::int32_t> column;
    std::vector<double> coefficient;
    std::vector<double> rowLower;  ///< [nbRows], -infinity: none
    std::vector<double> rowUpper;  ///< [nbRows], infinity: none
    /// [nbRows] how far a point that the judge accepts may be outside, 0 for exact relations.
    std::vector<double> tolerance;

    std::vector<LinearObjective> objective;  ///< by priority, as the model's
    std::vector<CurvedColumn> curved;        ///< what ties them to their expressions is no row

    [[nodiscard]] std::size_t nbColumns() const { return lower.size(); }
    [[nodiscard]] std::size_t nbRows() const { return rowLower.size(); }
};

}  // namespace engine
