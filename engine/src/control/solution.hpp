#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "evaluate/incumbent.hpp"
#include "model/closed_model.hpp"

namespace engine {

/// The current best point of a closed model and what is known about it.
///
/// Every status rests on `judge`: whatever a search or a proof claims, the point is evaluated from
/// scratch before anything is said about it. That is done when first asked, so that setting a
/// million starting values costs one evaluation.
///
/// The model outlives this. Used by one thread at a time.
class Solution {
public:
    /// Starts at the values nearest to 0.
    explicit Solution(const ClosedModel& model);

    /// Sets a starting value, moved into the domain. A proof of optimality ends with it.
    void setDecision(DecisionIndex d, Value wanted);

    /// Makes the incumbent of a search or a proof the current point. A proof of optimality ends
    /// with it.
    void replace(Incumbent incumbent);

    [[nodiscard]] const Point& point() const { return current_.point; }
    [[nodiscard]] const Verdict& verdict() const;
    /// Is `other` better than the current point? Feasible before infeasible, then by objectives or
    /// by violation. Believes what the search says of its points, so that it costs no evaluation.
    [[nodiscard]] bool isImprovedBy(const Incumbent& other) const;
    /// The current point with what was last said of it.
    [[nodiscard]] const Incumbent& claimed() const { return current_; }
    /// Replaces what was said of the current point by the judge's verdict; before a solve.
    void confirm() { current_.verdict = verdict(); }

    /// Value of any expression but an array. Decisions and constants need no evaluation.
    ///
    /// While some decision's domain is empty, or an objective is not a number although all
    /// constraints hold, the point is not feasible: every added constraint then reads 0, whatever
    /// its operands read. A constraint that is not a number reads 0 too.
    [[nodiscard]] Value valueOf(ExpressionIndex e) const;

    /// Records the proof that no feasible point exists. Without effect, and false, when the current
    /// point is feasible: what is judged outweighs what is claimed.
    bool proveInconsistent();
    /// Records the proof that the current point is optimal. Without effect, and false, when it is
    /// not feasible.
    bool proveOptimal();

    /// Notes that no feasible point is better than `bound` in an objective, by proof.
    void tightenBound(std::size_t objective, double bound);
    /// [nbObjectives] The best proved bounds; -infinity or infinity where there is none.
    [[nodiscard]] const std::vector<double>& bounds() const { return bound_; }
    /// |objective - bound| / max(1, |objective|) of the first objective; nothing without an
    /// objective, a feasible point or a bound.
    [[nodiscard]] std::optional<double> gap() const;

    /// The constraints that do not hold at the current point.
    struct Violations {
        std::size_t nb = 0;
        ExpressionIndex worst = -1;  ///< the one farthest from holding, in its own units
    };
    /// O(constraints).
    [[nodiscard]] Violations violations() const;

    /// Is the model proved inconsistent, or the current point proved optimal? Costs nothing.
    [[nodiscard]] bool isProved() const { return isInconsistent_ || isOptimal_; }
    [[nodiscard]] ls_solution_status status() const;

private:
    void judgeIfNeeded() const;
    void dropRefutedBounds();

    const ClosedModel& model_;
    std::vector<double> bound_;
    Incumbent current_;  ///< the verdict in it is a claim; `verdict_` is the judge's
    bool hasEmptyDomain_ = false;
    bool mayMisread_ = false;  ///< a decision may be a constraint that reads 0 by rule
    bool isInconsistent_ = false;
    bool isOptimal_ = false;
    // Filled when first asked after a change of the point.
    mutable bool isJudged_ = false;
    mutable Verdict verdict_;
    mutable std::vector<Value> values_;  ///< [nbExpressions]
};

}  // namespace engine
