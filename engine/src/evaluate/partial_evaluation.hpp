#pragma once

#include <span>
#include <vector>

#include "model/closed_model.hpp"

namespace engine {

/// Recomputes some expressions of a model from scratch, with what they depend on and nothing else.
class PartialEvaluation {
public:
    /// The model outlives it.
    explicit PartialEvaluation(const ClosedModel& model)
        : model_(model), isNeeded_(model.op.size(), 0) {}

    /// O(expressions).
    void setTargets(std::span<const ExpressionIndex> targets);
    /// Brings the targets up to date.
    /// @param values  of all expressions; those of decisions and constants are read.
    void evaluate(std::vector<Value>& values) const;
    /// Expressions recomputed by `evaluate`.
    [[nodiscard]] std::size_t work() const { return order_.size(); }

private:
    const ClosedModel& model_;
    std::vector<ExpressionIndex> order_;  ///< operands before their users
    std::vector<unsigned char> isNeeded_;
};

}  // namespace engine
