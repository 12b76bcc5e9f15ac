#pragma once

#include <string_view>
#include <vector>

#include "evaluate/incumbent.hpp"

namespace engine {

/// The best point of a tree without what the judge's tolerance gives: objectives that rest on rows
/// missed by 1e-6 are better than any bound on what the rows say, and would let a tree that
/// compares with them end too early.
class CleanPoints {
public:
    /// @param model   outlives it.
    /// @param domain  [nbDecisions] in which points are moved.
    /// @param finder  of the points.
    CleanPoints(const ClosedModel& model, std::vector<Interval> domain, std::string_view finder)
        : model_(model), domain_(std::move(domain)), finder_(finder), best_(model) {}

    /// Judges a point; if it is better than the best, moves it onto its rows and keeps the outcome
    /// if that still is. @return whether it was kept.
    bool offer(const Point& point);
    /// The same for the best point of others, once.
    void lookAt(const FeasibleIncumbent& others);
    [[nodiscard]] const FeasibleIncumbent& best() const { return best_; }

private:
    const ClosedModel& model_;
    std::vector<Interval> domain_;
    std::string_view finder_;
    FeasibleIncumbent best_;
    Verdict seen_;  ///< of the best that others had, as it came
    std::vector<Value> values_;
};

}  // namespace engine
