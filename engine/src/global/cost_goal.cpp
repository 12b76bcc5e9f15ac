#include "global/cost_goal.hpp"

#include <algorithm>
#include <cmath>

#include "global/integral_objective.hpp"

namespace engine {
namespace {

/// Objectives nearer than this, absolute and relative above 1, are the same: a bound that leaves no
/// more proves an incumbent. A little inside the tolerance of relations.
constexpr double optimalityGap = 0.9e-6;
/// A better objective of an all-integer one is better by a step; the rest is rounding.
constexpr double stepRounding = 1e-6;

}  // namespace

CostGoal::CostGoal(const ClosedModel& model, const FactorableModel& factorable,
                   const FeasibleIncumbent& incumbent)
    : model_(model), incumbent_(incumbent), cost_(factorable.linear.nbColumns(), 0.0) {
    if (!hasObjective()) return;
    const LinearObjective& objective = factorable.linear.objective.front();
    sign_ = objective.maximise ? -1.0 : 1.0;
    constant_ = sign_ * objective.form.constant;
    for (std::size_t k = 0; k < objective.form.column.size(); ++k) {
        cost_[static_cast<std::size_t>(objective.form.column[k])] =
            sign_ * objective.form.coefficient[k];
    }
    step_ = stepOf(factorable, objective.form);
}

double CostGoal::cutoff() const {
    if (!incumbent_.hasPoint()) return infinity;
    if (!hasObjective()) return -infinity;
    const double value = sign_ * incumbent_.verdict().objectives.front().asDouble();
    const double size = std::max(1.0, std::fabs(value));
    return std::min(value - optimalityGap * size,
                    step_ > 0.0 ? value - step_ + stepRounding * size : infinity);
}

void CostGoal::addCutoff(std::vector<ValueLimit>& restrictions) const {
    const double most = cutoff();
    if (std::isinf(most) || !hasObjective()) return;
    const ExpressionIndex e = model_.objective.front().expression;
    restrictions.push_back(sign_ > 0.0 ? ValueLimit{e, -infinity, most}
                                       : ValueLimit{e, -most, infinity});
}

double CostGoal::leastCost(const Propagator& propagator) const {
    if (!hasObjective()) return -infinity;
    const Range r = propagator.rangeOf(model_.objective.front().expression);
    if (r.mayBeNan) return -infinity;
    return sign_ > 0.0 ? r.lower : -r.upper;
}

}  // namespace engine
