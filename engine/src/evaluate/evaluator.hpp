#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "evaluate/judge.hpp"
#include "evaluate/plan.hpp"
#include "evaluate/violation_ledger.hpp"
#include "model/closed_model.hpp"
#include "operators/distance.hpp"
#include "operators/exact_sum.hpp"

namespace engine {

/// Values of all expressions at a point that moves, with the constraints' violations.
///
/// A move sets decisions and calls `propagate`, which recomputes what depends on them, operands
/// before users, each expression once; sums take the difference of the changed term alone. Moves
/// are logged until `commit`, and `undoTo` takes back everything since a mark.
///
/// Owned by one search thread; reads the model, which outlives it.
class Evaluator {
public:
    struct Mark {
        std::size_t nbValues;
        std::size_t nbSums;
        std::size_t nbDistances;
    };
    struct ValueChange {
        ExpressionIndex expression;
        Value before;
    };
    struct DistanceChange {
        std::int32_t logicIndex;
        Distance before;
    };

    explicit Evaluator(const ClosedModel& model);

    /// Evaluates everything at `point` [nbDecisions]; the log is empty afterwards. O(operands).
    void reset(const Point& point);
    /// Sets a decision; other values follow with the next `propagate`.
    void set(DecisionIndex d, Value v);
    void propagate();

    [[nodiscard]] Mark mark();
    void undoTo(const Mark& mark);
    void commit();
    /// Changes since `mark`, each expression at least once, the oldest first.
    [[nodiscard]] std::span<const ValueChange> valuesSince(const Mark& mark) const {
        return std::span(valueLog_).subspan(mark.nbValues);
    }
    [[nodiscard]] std::span<const DistanceChange> distancesSince(const Mark& mark) const {
        return std::span(distanceLog_).subspan(mark.nbDistances);
    }

    [[nodiscard]] const Plan& plan() const { return plan_; }
    /// Any expression, products that the plan absorbed included.
    [[nodiscard]] Value valueOf(ExpressionIndex e) const {
        const auto i = static_cast<std::size_t>(e);
        return plan_.isAbsorbed(e) ? computeAbsorbed(e) : value_[i];
    }
    /// Of all expressions, those of absorbed products excepted.
    [[nodiscard]] std::span<const Value> values() const { return value_; }
    [[nodiscard]] Value decisionValue(DecisionIndex d) const {
        return value_[static_cast<std::size_t>(
            plan_.model().decision[static_cast<std::size_t>(d)])];
    }
    /// Of an expression with a distance.
    [[nodiscard]] const Distance& distanceOf(std::int32_t logicIndex) const {
        return distance_[static_cast<std::size_t>(logicIndex)];
    }
    /// Violation of every constraint, by the plan's entries, in the relation's own scale.
    [[nodiscard]] ViolationLedger& ledger() { return ledger_; }
    [[nodiscard]] const ViolationLedger& ledger() const { return ledger_; }
    /// Objectives that are not a number. O(objectives).
    [[nodiscard]] std::size_t nbUndefinedObjectives() const;
    /// Do all constraints hold, and is every objective a number? O(objectives).
    [[nodiscard]] bool isFeasible() const {
        return ledger_.violated().empty() && nbUndefinedObjectives() == 0;
    }
    /// Sum of the violations; an undefined objective is as far away as can be. 0 when feasible.
    [[nodiscard]] double violation() const {
        return ledger_.total() + farAway * static_cast<double>(nbUndefinedObjectives());
    }

private:
    static constexpr ExpressionIndex none = -1;

    [[nodiscard]] Value computeAbsorbed(ExpressionIndex e) const;
    [[nodiscard]] ExactSum computeSum(ExpressionIndex e) const;
    [[nodiscard]] Distance computeDistance(ExpressionIndex e) const;
    void touch(ExpressionIndex e);
    void recompute(ExpressionIndex e);
    void writeValue(ExpressionIndex e, Value v);
    /// @return whether the distance changed.
    bool updateDistance(ExpressionIndex e);
    void tellUsers(ExpressionIndex e, bool valueChanged, Value before);
    void exchangeTerm(const Plan::Link& link, Value before, Value after);
    void storeDistance(std::int32_t logicIndex, const Distance& distance);

    Plan plan_;
    std::vector<Value> value_;
    std::vector<ExactSum> sum_;
    std::vector<Distance> distance_;
    ViolationLedger ledger_;

    // Touched expressions wait in one linked list per level; `openLevels_` is a heap of the levels
    // whose list is not empty, the smallest first.
    std::vector<ExpressionIndex> firstOfLevel_;
    std::vector<ExpressionIndex> nextTouched_;
    std::vector<std::uint8_t> isTouched_;
    std::vector<std::int32_t> openLevels_;

    // The log saves each item once per segment, a segment being what lies between two marks.
    std::vector<ValueChange> valueLog_;
    std::vector<std::pair<std::int32_t, ExactSum>> sumLog_;
    std::vector<DistanceChange> distanceLog_;
    std::vector<std::uint64_t> valueSegment_;
    std::vector<std::uint64_t> sumSegment_;
    std::vector<std::uint64_t> distanceSegment_;
    std::uint64_t segment_ = 1;
};

}  // namespace engine
