#pragma once

#include <optional>
#include <vector>

#include "evaluate/evaluator.hpp"
#include "operators/inverse.hpp"

namespace engine {

/// A decision and the value it is to take.
struct DecisionMove {
    DecisionIndex decision;
    Value value;
};

/// Finds single decisions that bring an expression to a goal: starting at the expression, one
/// operand is chosen at random and the operator is solved for it, the other operands standing
/// still, until a decision is reached. Exact when the decision occurs once on the path's way.
///
/// After Niemetz, Preiner and Biere, "Propagation based local search for bit-precise reasoning",
/// Formal Methods in System Design 51 (2017), with numbers in place of bit vectors. O(depth), plus
/// the operands of products and extremes on the path; long sums are sampled.
class InverseWalk {
public:
    /// All arguments outlive the walk. @param domain  [nbDecisions], none empty.
    InverseWalk(const Evaluator& evaluator, const std::vector<Interval>& domain, Random& random)
        : evaluator_(evaluator),
          model_(evaluator.plan().model()),
          surroundings_{evaluator.values(), evaluator.plan().fixed(), evaluator.plan().absorbed(),
                        domain, random} {}

    /// @return nothing when the path chosen leads nowhere or the decision stands there already.
    std::optional<DecisionMove> propose(ExpressionIndex e, Goal goal);

    /// The value of `d`'s domain nearest to `number`; for discrete decisions on the side that
    /// `direction` asks for, and one step away from the current value at least if there is room.
    [[nodiscard]] Value valueInDomain(DecisionIndex d, double number, int direction) const;

private:
    MaybeStep stepFrom(ExpressionIndex e, const Goal& goal);

    const Evaluator& evaluator_;
    const ClosedModel& model_;
    InverseSurroundings surroundings_;
};

}  // namespace engine
