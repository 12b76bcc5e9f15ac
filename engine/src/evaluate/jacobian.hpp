#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "evaluate/gradient.hpp"

namespace engine {

/// A sparse matrix by rows.
struct SparseRows {
    std::vector<std::size_t> start{0};  ///< [nbRows + 1] into column, coefficient
    std::vector<std::int32_t> column;
    std::vector<double> coefficient;

    [[nodiscard]] std::size_t nbRows() const { return start.size() - 1; }
    [[nodiscard]] double timesVector(std::size_t row, std::span<const double> x) const {
        double sum = 0.0;
        for (std::size_t k = start[row]; k < start[row + 1]; ++k) {
            sum += coefficient[k] * x[static_cast<std::size_t>(column[k])];
        }
        return sum;
    }
    /// x += transposed * y.
    void addTransposed(std::span<const double> y, std::span<double> x) const {
        for (std::size_t i = 0; i < nbRows(); ++i) {
            if (y[i] == 0.0) continue;
            for (std::size_t k = start[i]; k < start[i + 1]; ++k) {
                x[static_cast<std::size_t>(column[k])] += coefficient[k] * y[i];
            }
        }
    }
};

/// First derivatives of many expressions, one row each, by reverse accumulation over what each row
/// depends on. Where there are kinks or domain errors it agrees with Gradient.
class Jacobian {
public:
    /// The model outlives it.
    explicit Jacobian(const ClosedModel& model)
        : model_(model), gradient_(model), isSeen_(model.op.size(), 0) {}

    void clearRows();
    /// Adds the row of `factor` times (plus - minus); `minus` may be negative, for nothing.
    /// O(what it depends on).
    void addRow(ExpressionIndex plus, ExpressionIndex minus, double factor);
    /// Operands looked at in one `compute`.
    [[nodiscard]] std::size_t work() const { return work_; }

    /// The rows' derivatives at `values` (of all expressions).
    /// @param columnOf  [nbDecisions] column of a decision, or -1: no derivative is wanted.
    const SparseRows& compute(std::span<const Value> values,
                              std::span<const std::int32_t> columnOf);
    /// Whether every derivative of a row was finite in the last `compute`; others count as 0.
    [[nodiscard]] bool isComplete(std::size_t row) const { return isComplete_[row] != 0; }

private:
    struct Row {
        ExpressionIndex plus;
        ExpressionIndex minus;
        double factor;
        std::size_t end;  ///< of its part of cone_
    };
    void visit(ExpressionIndex root);

    const ClosedModel& model_;
    Gradient gradient_;
    std::vector<Row> row_;
    std::vector<ExpressionIndex> cone_;  ///< the rows' cones one after the other
    std::vector<unsigned char> isSeen_;
    std::vector<ExpressionIndex> open_;  ///< scratch
    std::size_t work_ = 0;
    SparseRows result_;
    std::vector<unsigned char> isComplete_;  ///< [nbRows]
};

}  // namespace engine
