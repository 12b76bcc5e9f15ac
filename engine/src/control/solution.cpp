#include "control/solution.hpp"

#include <algorithm>
#include <cmath>

#include "model/domain.hpp"
#include "model/extended_precision.hpp"
#include "operators/operator_row.hpp"

namespace engine {
namespace {

double distanceFromHolding(const ClosedModel& model, ExpressionIndex e,
                           const std::vector<Value>& values) {
    const ls_operator op = model.operatorOf(e);
    if (isConnective(op)) return 1.0;
    return rowOf(op).distance({model, e, values, {}, {}, /*scale=*/1.0}).toTrue;
}

}  // namespace

Solution::Solution(const ClosedModel& model) : model_(model) {
    hasEmptyDomain_ = std::any_of(model.domain.begin(), model.domain.end(),
                                  [](const Interval& domain) { return domain.isEmpty(); });
    isInconsistent_ = hasEmptyDomain_;
    mayMisread_ =
        hasEmptyDomain_ ||
        std::any_of(model.constraint.begin(), model.constraint.end(), [&model](ExpressionIndex e) {
            return model.decisionOf[static_cast<std::size_t>(e)] >= 0;
        });
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
    current_.violation = infinity;
    isOptimal_ = false;
    isJudged_ = false;
}

void Solution::replace(Incumbent incumbent) {
    current_ = std::move(incumbent);
    if (current_.verdict.feasible) dropRefutedBounds();
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
    if (!bound_.empty()) bound_.front() = verdict().objectives.front().asDouble();
    return true;
}

void Solution::tightenBound(std::size_t objective, double bound) {
    double& known = bound_[objective];
    const bool isTighter = model_.objective[objective].maximise ? bound < known : bound > known;
    if (isTighter) known = bound;
}

/// A point that beats a bound by more than tolerances explain has refuted it.
void Solution::dropRefutedBounds() {
    for (std::size_t k = 0; k < bound_.size(); ++k) {
        const double value = current_.verdict.objectives[k].asDouble();
        const double sign = model_.objective[k].maximise ? -1.0 : 1.0;
        const double tolerance = 2.0 * relationTolerance * std::max(1.0, std::abs(value));
        if (sign * (bound_[k] - value) > tolerance) {
            bound_[k] = -sign * infinity;
        }
    }
}

Solution::Violations Solution::violations() const {
    judgeIfNeeded();
    Violations result;
    double largest = -1.0;
    for (const ExpressionIndex e : model_.constraint) {
        const auto k = static_cast<std::size_t>(e);
        if (values_[k].isTrue()) continue;
        ++result.nb;
        const double distance = distanceFromHolding(model_, e, values_);
        if (distance <= largest) continue;
        largest = distance;
        result.worst = e;
    }
    return result;
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
