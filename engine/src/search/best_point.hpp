#pragma once

#include <vector>

#include "evaluate/evaluator.hpp"
#include "search/searcher.hpp"

namespace engine {

/// The best point of a search. The search claims points on the word of its evaluator, which costs
/// O(decisions changed since the last claim); the judge confirms the last claim when `confirm` is
/// called, once for many claims, because judging costs O(operands).
class BestPoint {
public:
    explicit BestPoint(const ClosedModel& model)
        : model_(model), isMoved_(model.decision.size(), 0) {}

    /// Judges `point` and takes it if there is none yet or it is better.
    void offer(const Point& point, const Evaluator& evaluator);
    void adopt(const Incumbent& incumbent);
    /// The decision has moved since the last claim.
    void noteMoved(DecisionIndex d);
    /// Claims the evaluator's point if it is better than the last claim. @return whether it is.
    bool claim(const Evaluator& evaluator);
    /// @return false when the judge refuses the claim, which is forgotten then.
    bool confirm();

    /// The last confirmed point.
    [[nodiscard]] const Incumbent& incumbent() const { return confirmed_; }
    /// The last claim, confirmed or not.
    [[nodiscard]] const Incumbent& claimed() const { return claimed_; }

private:
    void noteAllMoved();

    const ClosedModel& model_;
    bool isFirst_ = true;
    Incumbent confirmed_;
    Incumbent claimed_;
    bool hasClaim_ = false;
    std::vector<DecisionIndex> moved_;  ///< since the last claim, without repetition
    std::vector<unsigned char> isMoved_;
    std::vector<Value> values_;  ///< the judge's, scratch
    Verdict candidate_;          ///< scratch
};

}  // namespace engine
