#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "model/closed_model.hpp"
#include "nonlinear/hessian_tape.hpp"
#include "nonlinear/smooth_graph.hpp"

namespace engine {

/// The smooth part of a closed model as a nonlinear program over all decisions as real numbers:
/// functions, rows first and then the objectives, with exact first and second derivatives.
///
/// A constraint `a <= b` becomes the row a - b with its range, also inside a conjunction and below
/// negations. A strict relation asks for a little more than the tolerance of relations. What is no
/// relation of that kind (alternatives, neq, truth values) has no row: whether a point meets it,
/// the judge says.
///
/// Structure is found once, at construction. One thread at a time; the model outlives it.
class NonlinearProgram {
public:
    explicit NonlinearProgram(const ClosedModel& model);

    [[nodiscard]] const ClosedModel& model() const { return model_; }
    [[nodiscard]] std::size_t nbVariables() const { return model_.decision.size(); }
    [[nodiscard]] std::size_t nbRows() const { return lower_.size(); }
    /// Rows, then objectives by priority.
    [[nodiscard]] std::size_t nbFunctions() const { return root_.size(); }
    [[nodiscard]] double rowLower(std::size_t row) const { return lower_[row]; }
    [[nodiscard]] double rowUpper(std::size_t row) const { return upper_[row]; }
    /// Whether the rows say all that the constraints say.
    [[nodiscard]] bool isWhole() const { return isWhole_; }
    /// Whether there is a Hessian: its computation is not too long.
    [[nodiscard]] bool hasHessian() const { return hessian_->isWritten(); }
    /// Derivatives of the function are the same everywhere.
    [[nodiscard]] bool isLinear(std::size_t function) const { return isLinear_[function] != 0; }

    /// First derivatives by functions: entries of function f are those from start()[f] on.
    [[nodiscard]] std::span<const std::size_t> start() const { return start_; }
    [[nodiscard]] std::span<const std::int32_t> column() const { return column_; }
    /// Lower triangle of the Hessian.
    [[nodiscard]] std::span<const std::int32_t> hessianRow() const { return hessian_->rows(); }
    [[nodiscard]] std::span<const std::int32_t> hessianColumn() const {
        return hessian_->columns();
    }
    /// Operands looked at in one evaluation with all derivatives.
    [[nodiscard]] std::size_t work() const;

    /// Goes to `x` [nbVariables]. All that follows is about this point. O(operands).
    void moveTo(std::span<const double> x);
    /// Maybe not finite.
    [[nodiscard]] double valueOf(std::size_t function) const {
        return graph_.valueOf(root_[function]);
    }
    /// How far the row is outside its range, 0 inside; infinite where it is not defined.
    [[nodiscard]] double violationOf(std::size_t row) const;
    /// First derivatives of all functions, [column().size()]; those not finite count as 0.
    std::span<const double> computeJacobian();
    /// Hessian of the weighted sum of functions. Only when hasHessian().
    /// @param weight  [nbFunctions].
    /// @param values  receives the entries, [hessianRow().size()].
    void computeHessian(std::span<const double> weight, std::span<double> values);

private:
    void addRows();
    void addRow(ls_operator relation, ExpressionIndex left, ExpressionIndex right);
    void findCones();
    void addCone(std::size_t function, std::vector<std::int32_t>& seenBy);
    void differentiate();
    void accumulate(std::int32_t node);

    const ClosedModel& model_;
    SmoothGraph graph_;
    std::vector<std::int32_t> root_;  ///< [nbFunctions] node
    std::vector<double> lower_;       ///< [nbRows]
    std::vector<double> upper_;       ///< [nbRows]
    bool isWhole_ = true;
    std::vector<std::uint8_t> isLinear_;  ///< [nbFunctions]
    std::vector<std::size_t> start_{0};   ///< [nbFunctions + 1]
    std::vector<std::int32_t> column_;
    std::vector<double> jacobian_;
    std::vector<std::size_t> coneStart_{0};  ///< [nbFunctions + 1]
    std::vector<std::int32_t> cone_;         ///< inner nodes, users before their operands
    std::optional<HessianTape> hessian_;
    std::vector<double> adjoint_;  ///< [nbNodes], 0 between computations
    bool isDifferentiated_ = false;
};

}  // namespace engine
