#pragma once

#include <span>

#include "operators/adjoints.hpp"

namespace engine {

/// Derivatives of a weighted sum of expressions by all decisions, by reverse accumulation
/// (Griewank and Walther, "Evaluating Derivatives", 2008, section 3.2).
///
/// Where an expression has kinks, the derivative of the piece that the point lies on is taken;
/// relations, logic and rounding have derivative 0, and so has what is not finite.
class Gradient {
public:
    explicit Gradient(const ClosedModel& model) : model_(model), adjoints_(model.op.size()) {}

    /// Forgets all weights. O(expressions).
    void clear() { adjoints_.clear(); }
    void addWeight(ExpressionIndex e, double weight) { adjoints_.add(e, weight); }
    /// Whether no derivative had to be left out, because it was not finite, since the last
    /// question.
    bool takeCompleteness() { return adjoints_.takeCompleteness(); }
    /// Carries the weights to the decisions. @param values  of all expressions. O(operands).
    void accumulate(std::span<const Value> values);
    /// The same along `cone` alone: the weighted expressions with all that they depend on, users
    /// before their operands. O(its operands).
    void accumulateAlong(std::span<const ExpressionIndex> cone, std::span<const Value> values) {
        for (const ExpressionIndex e : cone) pass(e, values);
    }
    /// The derivative that has arrived at `e`, forgotten afterwards.
    double take(ExpressionIndex e) { return adjoints_.take(e); }
    [[nodiscard]] double byDecision(DecisionIndex d) const {
        return adjoints_.of(model_.decision[static_cast<std::size_t>(d)]);
    }

private:
    void pass(ExpressionIndex e, std::span<const Value> values);

    const ClosedModel& model_;
    Adjoints adjoints_;
};

}  // namespace engine
