#pragma once

#include <span>
#include <utility>
#include <vector>

#include "model/closed_model.hpp"

namespace engine {

/// Derivatives of a weighted sum of expressions by all decisions, by reverse accumulation
/// (Griewank and Walther, "Evaluating Derivatives", 2008, section 3.2).
///
/// Where an expression has kinks, the derivative of the piece that the point lies on is taken;
/// relations, logic and rounding have derivative 0, and so has what is not finite.
class Gradient {
public:
    explicit Gradient(const ClosedModel& model) : model_(model), adjoint_(model.op.size(), 0.0) {}

    /// Forgets all weights. O(expressions).
    void clear();
    void addWeight(ExpressionIndex e, double weight) {
        adjoint_[static_cast<std::size_t>(e)] += weight;
    }
    /// Whether no derivative had to be left out, because it was not finite, since the last
    /// question.
    bool takeCompleteness() { return std::exchange(isComplete_, true); }
    /// Carries the weights to the decisions. @param values  of all expressions. O(operands).
    void accumulate(std::span<const Value> values);
    /// The same along `cone` alone: the weighted expressions with all that they depend on, users
    /// before their operands. O(its operands).
    void accumulateAlong(std::span<const ExpressionIndex> cone, std::span<const Value> values) {
        for (const ExpressionIndex e : cone) pass(e, values);
    }
    /// The derivative that has arrived at `e`, forgotten afterwards.
    double take(ExpressionIndex e) {
        return std::exchange(adjoint_[static_cast<std::size_t>(e)], 0.0);
    }
    [[nodiscard]] double byDecision(DecisionIndex d) const {
        return adjoint_[static_cast<std::size_t>(model_.decision[static_cast<std::size_t>(d)])];
    }

private:
    void pass(ExpressionIndex e, std::span<const Value> values);
    void spread(ExpressionIndex e, double weight, std::span<const Value> values);
    void spreadProduct(std::span<const ExpressionIndex> x, double weight,
                       std::span<const Value> values);
    void spreadScalarProduct(std::span<const ExpressionIndex> arrays, double weight,
                             std::span<const Value> values);
    void give(ExpressionIndex e, double weight);

    const ClosedModel& model_;
    std::vector<double> adjoint_;
    bool isComplete_ = true;
    std::vector<double> suffix_;  ///< scratch: products of the last operands
};

}  // namespace engine
