#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "model/closed_model.hpp"
#include "operators/narrowing.hpp"

namespace engine {

/// An expression's value is a number in [lower, upper].
struct ValueLimit {
    ExpressionIndex expression;
    double lower;
    double upper;
};

/// Interval propagation over the whole graph: ranges go forward from operands to users and back
/// from what must hold to the operands until nothing changes (HC4), by rank, without recursion.
///
/// Every feasible point, by the judge's measure with its tolerance, stays inside the ranges. Work
/// is bounded; a run that reaches the bound stops early with valid, wider ranges. States: new,
/// then started by start(); after a conflict only undoTo() makes it usable again.
class Propagator final : public Narrowing {
public:
    /// The model must outlive the propagator.
    explicit Propagator(const ClosedModel& model);

    /// Propagates from `domain` ([nbDecisions], lower <= upper) and the constraints.
    /// @param workLimit  operands that may be looked at.
    /// @return false: proved that no feasible point lies inside.
    bool start(const std::vector<Interval>& domain, std::int64_t workLimit);

    /// Restricts decision `d` further and propagates, with the same outcome as start().
    bool restrictDecision(DecisionIndex d, Interval interval, std::int64_t workLimit);

    /// Restricts expressions, whose values are then numbers, and propagates as start() does.
    bool restrictAll(std::span<const ValueLimit> restrictions, std::int64_t workLimit);

    /// A state to come back to; keep the marks like a stack.
    [[nodiscard]] std::size_t mark();
    void undoTo(std::size_t mark);

    [[nodiscard]] const RangeStore& ranges() const override { return ranges_; }
    [[nodiscard]] Interval domainOf(DecisionIndex d) const {
        const Range r = rangeOf(model_.decision[static_cast<std::size_t>(d)]);
        return {r.lower, r.upper};
    }
    /// Operands looked at since construction.
    [[nodiscard]] std::int64_t work() const { return work_; }

    void restrict(ExpressionIndex e, double lower, double upper) override;

private:
    /// Expressions waiting for a visit, each at most once, by ascending or descending rank.
    class Queue {
    public:
        Queue(std::size_t nbExpressions, int direction)
            : isWaiting_(nbExpressions, false), direction_(direction) {}
        void push(std::int32_t rank);
        std::int32_t pop();
        void clear();
        [[nodiscard]] bool isEmpty() const { return heap_.empty(); }

    private:
        std::vector<std::int32_t> heap_;  ///< ranks times direction, smallest on top
        std::vector<bool> isWaiting_;
        int direction_;
    };
    struct Saved {
        ExpressionIndex expression;
        Range range;
    };

    [[nodiscard]] bool isOperator(ExpressionIndex e) const;
    void initialise(const std::vector<Interval>& domain);
    bool settle(std::int64_t workLimit);
    void visitForward(ExpressionIndex e);
    void visitBackward(ExpressionIndex e);
    [[nodiscard]] Range rounded(ExpressionIndex e, Range r) const;
    void replace(ExpressionIndex e, const Range& r, bool fromAbove);

    const ClosedModel& model_;
    RangeStore ranges_;
    Queue forward_;
    Queue backward_;
    std::vector<Saved> trail_;
    bool keepsTrail_ = false;
    bool conflict_ = false;
    std::int64_t work_ = 0;
};

}  // namespace engine
