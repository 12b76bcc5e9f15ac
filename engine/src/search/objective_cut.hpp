#pragma once

#include <optional>
#include <vector>

#include "evaluate/evaluator.hpp"
#include "search/inverse.hpp"
#include "search/restrictions.hpp"

namespace engine {

/// The objectives as one more constraint: "better than the best point so far".
///
/// One level is active: the objectives of higher priority must be as good as in the best point,
/// the active one better by the ambition; those of lower priority do not count. Without a feasible
/// point all that is asked is that every objective is a number. Owned by one search; reads its
/// evaluator.
class ObjectiveCut {
public:
    explicit ObjectiveCut(const Evaluator& evaluator);

    /// The best feasible point's objectives, by priority.
    void setBest(const std::vector<Value>& objectives);
    /// Is there something to improve on?
    [[nodiscard]] bool isActive() const { return hasBest_ && !best_.empty(); }
    /// Next objective in turn, the first after the last.
    void activateNextLevel();
    /// The objective whose turn it is, if the model has any.
    [[nodiscard]] std::optional<Objective> activeObjective() const {
        return objective_.empty() ? std::nullopt : std::optional(objective_[level_]);
    }
    /// How much better the active objective shall become, relative to its size.
    void setAmbition(double relative) { ambition_ = relative; }

    /// Weighted violation of the cut at the evaluator's point.
    [[nodiscard]] double weighted() const;
    [[nodiscard]] double weight() const { return weight_; }
    void setWeight(double weight) { weight_ = weight; }

    /// An objective that is not a number at the evaluator's point, if there is one.
    [[nodiscard]] std::optional<ExpressionIndex> undefinedObjective() const;

    /// The active objective's expression, and the goal of bettering it by `relative` of its size.
    [[nodiscard]] ExpressionIndex expression() const;
    [[nodiscard]] Goal improvement(double relative) const;
    /// The active objective is to be better than in the best point by `relative` of its size.
    [[nodiscard]] Restriction restriction(double relative) const;

private:
    [[nodiscard]] double currentOf(std::size_t level) const;
    [[nodiscard]] double stepOf(std::size_t level, double relative) const;

    const Evaluator& evaluator_;
    const std::vector<Objective>& objective_;
    std::vector<double> scale_;
    std::vector<double> best_;
    bool hasBest_ = false;
    std::size_t level_ = 0;
    double ambition_ = 1e-4;
    double weight_ = 1.0;
};

}  // namespace engine
