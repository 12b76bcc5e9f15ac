#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "evaluate/evaluator.hpp"
#include "search/random.hpp"

namespace engine {

/// What an expression is to become: a truth value or a number.
struct Goal {
    bool isTruth;
    bool truth;
    double number;
    int direction;  ///< -1: at most `number`, 1: at least, 0: as near as possible

    static Goal ofTruth(bool truth) { return {true, truth, 0.0, 0}; }
    static Goal ofNumber(double number, int direction) { return {false, false, number, direction}; }
};

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
          domain_(domain),
          random_(random) {}

    /// @return nothing when the path chosen leads nowhere or the decision stands there already.
    std::optional<DecisionMove> propose(ExpressionIndex e, Goal goal);

    /// The value of `d`'s domain nearest to `number`; for discrete decisions on the side that
    /// `direction` asks for, and one step away from the current value at least if there is room.
    [[nodiscard]] Value valueInDomain(DecisionIndex d, double number, int direction) const;

private:
    struct Step {
        ExpressionIndex operand;
        Goal goal;
    };
    using MaybeStep = std::optional<Step>;

    MaybeStep stepFrom(ExpressionIndex e, const Goal& goal);
    MaybeStep stepOutOfNan(ExpressionIndex e);

    // Logic (inverse_logic.cpp).
    MaybeStep throughRelation(ExpressionIndex e, bool truth);
    MaybeStep throughConnective(ExpressionIndex e, bool truth);
    MaybeStep throughIf(ExpressionIndex e, const Goal& goal);

    // Arithmetic (inverse_arithmetic.cpp); `t` is the number wanted.
    MaybeStep throughSum(ExpressionIndex e, const Goal& goal);
    MaybeStep throughDifference(ExpressionIndex e, const Goal& goal);
    MaybeStep throughProduct(ExpressionIndex e, const Goal& goal);
    MaybeStep throughExtreme(ExpressionIndex e, const Goal& goal, int sign);
    MaybeStep throughDistance(ExpressionIndex e, double t);
    MaybeStep throughQuotient(ExpressionIndex e, double t);
    MaybeStep throughElement(ExpressionIndex e, const Goal& goal);
    MaybeStep throughScalarProduct(ExpressionIndex e, double t);
    MaybeStep throughPower(ExpressionIndex e, const Goal& goal);
    MaybeStep throughFunction(ExpressionIndex e, const Goal& goal);

    [[nodiscard]] double number(ExpressionIndex e) const {
        return evaluator_.valueOf(e).asDouble();
    }
    [[nodiscard]] bool isFixed(ExpressionIndex e) const { return evaluator_.plan().isFixed(e); }
    [[nodiscard]] bool hasRoom(ExpressionIndex e, double wanted) const;
    /// The `m`-th root that keeps the sign of the current value, with the direction turned along.
    [[nodiscard]] Goal rootGoal(double current, double m, const Goal& goal) const;
    /// A random operand for which `accepts` holds, scanning a bounded number of them.
    template <typename Predicate>
    std::optional<ExpressionIndex> anyOperand(std::span<const ExpressionIndex> operands,
                                              Predicate accepts);

    const Evaluator& evaluator_;
    const ClosedModel& model_;
    const std::vector<Interval>& domain_;
    Random& random_;
};

template <typename Predicate>
std::optional<ExpressionIndex> InverseWalk::anyOperand(std::span<const ExpressionIndex> operands,
                                                       Predicate accepts) {
    constexpr std::size_t longestScan = 64;
    if (operands.empty()) return std::nullopt;
    std::size_t k = random_.below(operands.size());
    for (std::size_t n = 0; n < operands.size() && n < longestScan; ++n) {
        if (!isFixed(operands[k]) && accepts(operands[k])) return operands[k];
        if (++k == operands.size()) k = 0;
    }
    return std::nullopt;
}

}  // namespace engine
