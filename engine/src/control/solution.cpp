#include "control/solution.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "model/domain.hpp"
#include "model/extended_precision.hpp"

namespace engine {

Solution::Solution(const ClosedModel& model) : model_(model) {
    hasEmptyDomain_ = std::any_of(model.domain.begin(), model.domain.end(),
                                  [](const Interval& domain) { return domain.isEmpty(); });
    isInconsistent_ = hasEmptyDomain_;
    mayMisread_ =
        hasEmptyDomain_ ||
        std::any_of(model.constraint.begin(), model.constraint.end(), [&model](ExpressionIndex e) {
            return model.decisionOf[static_cast<std::size_t>(e)] >= 0;
        });
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const Objective& o : model.objective) bound_.push_back(o.maximise ? infinity : -infinity);
    current_.violation = infinity;
    current_.point.reserve(model.domain.size());
    for (DecisionIndex d = 0; d < model.nbDecisions(); ++d) {
        const Interval& domain = model.domain[static_cast<std::size_t>(d)];
        current_.point.push_back(nearestValue(Value::ofInt(0), domain, model.isDiscrete(d)));
    }
}

void Solution::setDecision(DecisionIndex d, Value wanted) {
    const auto k = static_cast<std::size_t>(d);
    current_.point[k] = nearestValue(wanted, model_.domain[k], model_.isDiscrete(d));
    current_.violation = std::numeric_limits<double>::infinity();
    isOptimal_ = false;
    isJudged_ = false;
}

void Solution::replace(Incumbent incumbent) {
    current_ = std::move(incumbent);
    isOptimal_ = false;
    isJudged_ = false;
}

bool Solution::isImprovedBy(const Incumbent& other) const {
    if (current_.verdict.feasible || other.verdict.feasible) {
        return isBetter(model_, other.verdict, current_.verdict);
    }
    return other.violation < current_.violation;
}

void Solution::judgeIfNeeded() const {
    if (isJudged_) return;
    const ExtendedPrecision precision;
    verdict_ = judge(model_, current_.point, values_);
    if (hasEmptyDomain_) verdict_.feasible = false;
    // Only an objective that is not a number can make the point infeasible then.
    const bool allHold = std::all_of(
        model_.constraint.begin(), model_.constraint.end(),
        [this](ExpressionIndex e) { return values_[static_cast<std::size_t>(e)].isTrue(); });
    const bool mustReadZero = hasEmptyDomain_ || (allHold && !verdict_.feasible);
    for (const ExpressionIndex e : model_.constraint) {
        Value& value = values_[static_cast<std::size_t>(e)];
        if (!mustReadZero && !std::isnan(value.asDouble())) continue;
        const bool isDouble = model_.isDouble[static_cast<std::size_t>(e)] != 0;
        value = isDouble ? Value::ofDouble(0.0) : Value::ofInt(0);
    }
    isJudged_ = true;
}

const Verdict& Solution::verdict() const {
    judgeIfNeeded();
    return verdict_;
}

Value Solution::valueOf(ExpressionIndex e) const {
    const auto k = static_cast<std::size_t>(e);
    const DecisionIndex d = model_.decisionOf[k];
    if (!mayMisread_ && d >= 0) return current_.point[static_cast<std::size_t>(d)];
    judgeIfNeeded();
    return values_[k];
}

bool Solution::proveInconsistent() {
    if (verdict().feasible) return false;
    isInconsistent_ = true;
    return true;
}

bool Solution::proveOptimal() {
    if (!verdict().feasible) return false;
    isOptimal_ = true;
    return true;
}

void Solution::tightenBound(std::size_t objective, double bound) {
    double& known = bound_[objective];
    const bool isTighter = model_.objective[objective].maximise ? bound < known : bound > known;
    if (isTighter) known = bound;
}

std::optional<double> Solution::gap() const {
    if (bound_.empty() || std::isinf(bound_.front()) || !verdict().feasible) return std::nullopt;
    const double objective = verdict().objectives.front().asDouble();
    return std::abs(objective - bound_.front()) / std::max(1.0, std::abs(objective));
}

ls_solution_status Solution::status() const {
    if (isInconsistent_) return LS_STATUS_INCONSISTENT;
    if (!verdict().feasible) return LS_STATUS_INFEASIBLE;
    return isOptimal_ ? LS_STATUS_OPTIMAL : LS_STATUS_FEASIBLE;
}

}  // namespace engine
