#pragma once

#include <vector>

#include "evaluate/propagator.hpp"
#include "global/clean_points.hpp"
#include "global/factorable_model.hpp"

namespace engine {

/// What a tree looks for: the first objective as a cost to be minimised, and what counts as better
/// than the incumbent. Without an objective every point ends the search.
class CostGoal {
public:
    /// All outlive it.
    CostGoal(const ClosedModel& model, const FactorableModel& factorable,
             const FeasibleIncumbent& incumbent);

    [[nodiscard]] bool hasObjective() const { return !model_.objective.empty(); }
    /// 1 for minimising, -1 for maximising.
    [[nodiscard]] double sign() const { return sign_; }
    /// [nbColumns] of the linear relaxation; the constant comes to it.
    [[nodiscard]] const std::vector<double>& cost() const { return cost_; }
    [[nodiscard]] double constant() const { return constant_; }
    [[nodiscard]] const FeasibleIncumbent& incumbent() const { return incumbent_; }
    /// Boxes that cost this or more cannot better the incumbent by more than the tolerance.
    [[nodiscard]] double cutoff() const;
    /// Limits the objective to what is better.
    void addCutoff(std::vector<ValueLimit>& restrictions) const;
    /// No point of the propagator's box costs less.
    [[nodiscard]] double leastCost(const Propagator& propagator) const;

private:
    const ClosedModel& model_;
    const FeasibleIncumbent& incumbent_;
    double sign_ = 1.0;
    std::vector<double> cost_;
    double constant_ = 0.0;
    double step_ = 0.0;  ///< better objectives are better by at least this
};

}  // namespace engine
