#include "search/continuous_descent.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace engine {
namespace {

std::size_t index(std::int32_t i) {
    return static_cast<std::size_t>(i);
}

/// In a larger model one line search would take longer than a tick of the search.
constexpr std::size_t mostOperands = 500'000;
constexpr double firstPenalty = 10.0;
constexpr double largestPenalty = 1e8;
constexpr int stepsPerProblem = 60;
constexpr int mostProblems = 40;
/// Scaled excess below which a point counts as feasible: well inside the relations' tolerance.
constexpr double fineExcess = 1e-8;

}  // namespace

ContinuousDescent::ContinuousDescent(const Plan& plan, const std::vector<Interval>& domain)
    : model_(plan.model()), domain_(domain), evaluation_(plan.model()), gradientOf_(plan.model()) {
    if (model_.operand.size() > mostOperands) return;
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) {
        const Interval& interval = domain[index(d)];
        if (!model_.isDiscrete(d) && interval.lower < interval.upper) free_.push_back(d);
    }
}

void ContinuousDescent::start(const Evaluator& evaluator,
                              const std::optional<Objective>& objective) {
    objective_ = objective;
    point_.resize(domain_.size());
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) {
        point_[index(d)] = evaluator.decisionValue(d);
    }
    x_.clear();
    for (const DecisionIndex d : free_) x_.push_back(point_[index(d)].asDouble());
    isFree_.assign(x_.size(), 1);
    restrictions_ = restrictionsAt(evaluator);
    multiplier_.assign(restrictions_.size(), 0.0);
    penalty_ = firstPenalty;
    lastExcess_ = std::numeric_limits<double>::infinity();
    nbSolved_ = nbSteps_ = 0;
    memory_.clear();
    judge(model_, point_, values_);
    std::vector<ExpressionIndex> targets = sidesOf(restrictions_);
    if (objective_) targets.push_back(objective_->expression);
    evaluation_.setTargets(targets);
    scaleObjective();
    lagrangian_ = evaluateAt(x_);
    differentiate();
    isRunning_ = isUseful() && std::isfinite(lagrangian_);
}

void ContinuousDescent::scaleObjective() {
    objectiveScale_ = 1.0;
    if (!objective_) return;
    gradientOf_.clear();
    gradientOf_.addWeight(objective_->expression, 1.0);
    gradientOf_.accumulate(values_);
    double largest = 0.0;
    for (const DecisionIndex d : free_) {
        largest = std::fmax(largest, std::fabs(gradientOf_.byDecision(d)));
    }
    if (largest > 0.0) objectiveScale_ = 1.0 / largest;
    if (objective_->maximise) objectiveScale_ = -objectiveScale_;
}

double ContinuousDescent::evaluateAt(const std::vector<double>& x) {
    for (std::size_t k = 0; k < free_.size(); ++k) {
        point_[index(free_[k])] = Value::ofDouble(x[k]);
        values_[index(model_.decision[index(free_[k])])] = point_[index(free_[k])];
    }
    evaluation_.evaluate(values_);
    work_ += static_cast<std::int64_t>(evaluation_.work());
    double total = 0.0;
    if (objective_) total = objectiveScale_ * values_[index(objective_->expression)].asDouble();
    for (std::size_t i = 0; i < restrictions_.size(); ++i) {
        const double excess = restrictions_[i].excess(values_);
        if (restrictions_[i].isEquation) {
            total += excess * (multiplier_[i] + 0.5 * penalty_ * excess);
        } else {
            const double force = std::fmax(0.0, multiplier_[i] + penalty_ * excess);
            // fmax hides a NaN.
            total += std::isnan(excess) ? excess : 0.5 * force * force / penalty_;
        }
    }
    return std::isfinite(total) ? total : std::numeric_limits<double>::infinity();
}

void ContinuousDescent::differentiate() {
    gradientOf_.clear();
    if (objective_) gradientOf_.addWeight(objective_->expression, objectiveScale_);
    for (std::size_t i = 0; i < restrictions_.size(); ++i) {
        const Restriction& r = restrictions_[i];
        double force = multiplier_[i] + penalty_ * r.excess(values_);
        if (!r.isEquation) force = std::fmax(0.0, force);
        const double weight = force * r.sign / r.scale;
        if (weight == 0.0) continue;
        gradientOf_.addWeight(r.left, weight);
        gradientOf_.addWeight(r.right, -weight);
    }
    gradientOf_.accumulate(values_);
    work_ += static_cast<std::int64_t>(model_.op.size());
    gradient_.clear();
    for (const DecisionIndex d : free_) gradient_.push_back(gradientOf_.byDecision(d));
}

bool ContinuousDescent::advance() {
    ++nbSteps_;
    const bool isStationary = chooseDirection();
    if (!isStationary && nbSteps_ < stepsPerProblem && searchLine()) return false;
    evaluateAt(x_);
    solveNext();
    return true;
}

bool ContinuousDescent::chooseDirection() {
    constexpr double fine = 1e-9;
    double norm = 0.0;
    direction_.assign(x_.size(), 0.0);
    for (std::size_t k = 0; k < x_.size(); ++k) {
        const Interval& domain = domain_[index(free_[k])];
        const bool pushedOut = gradient_[k] > 0.0 ? x_[k] <= domain.lower : x_[k] >= domain.upper;
        isFree_[k] = pushedOut ? 0 : 1;
        if (!pushedOut) direction_[k] = -gradient_[k];
        norm = std::fmax(norm, std::fabs(direction_[k]));
    }
    if (norm < fine) return true;
    memory_.turn(direction_, isFree_);
    double descent = 0.0;
    for (std::size_t k = 0; k < x_.size(); ++k) descent += direction_[k] * gradient_[k];
    if (descent < 0.0) return false;
    memory_.clear();
    for (std::size_t k = 0; k < x_.size(); ++k) {
        direction_[k] = isFree_[k] != 0 ? -gradient_[k] : 0.0;
    }
    return false;
}

bool ContinuousDescent::searchLine() {
    constexpr int mostHalvings = 30;
    double part = 1.0;
    if (memory_.isEmpty()) {
        double norm = 0.0;
        double size = 1.0;
        for (std::size_t k = 0; k < x_.size(); ++k) {
            norm = std::fmax(norm, std::fabs(direction_[k]));
            size = std::fmax(size, std::fabs(x_[k]));
        }
        part = std::fmin(1.0, 0.1 * size / norm);
    }
    for (int n = 0; n < mostHalvings; ++n, part *= 0.5) {
        double promised = 0.0;
        trial_ = x_;
        for (std::size_t k = 0; k < x_.size(); ++k) {
            const Interval& domain = domain_[index(free_[k])];
            trial_[k] = std::clamp(x_[k] + part * direction_[k], domain.lower, domain.upper);
            promised += gradient_[k] * (trial_[k] - x_[k]);
        }
        const double reached = evaluateAt(trial_);
        constexpr double sufficient = 1e-4;
        if (!(reached < lagrangian_ + sufficient * promised)) continue;
        step_.resize(x_.size());
        for (std::size_t k = 0; k < x_.size(); ++k) step_[k] = trial_[k] - x_[k];
        change_ = gradient_;
        x_ = trial_;
        lagrangian_ = reached;
        differentiate();
        for (std::size_t k = 0; k < x_.size(); ++k) change_[k] = gradient_[k] - change_[k];
        memory_.add(step_, change_);
        return true;
    }
    return false;
}

void ContinuousDescent::solveNext() {
    double largest = 0.0;
    for (std::size_t i = 0; i < restrictions_.size(); ++i) {
        const bool isEquation = restrictions_[i].isEquation;
        const double excess = restrictions_[i].excess(values_);
        const double force = multiplier_[i] + penalty_ * excess;
        const double missed = isEquation || force > 0.0 ? std::fabs(excess) : 0.0;
        largest = std::fmax(largest, missed);
        multiplier_[i] = isEquation ? force : std::fmax(0.0, force);
    }
    const bool solvedEarly = nbSteps_ < stepsPerProblem;
    if ((largest < fineExcess && solvedEarly) || ++nbSolved_ >= mostProblems) {
        isRunning_ = false;
        return;
    }
    constexpr double expectedDecrease = 0.25;
    constexpr double penaltyGrowth = 4.0;
    if (largest > expectedDecrease * lastExcess_ && penalty_ < largestPenalty) {
        penalty_ *= penaltyGrowth;
    }
    lastExcess_ = largest;
    nbSteps_ = 0;
    memory_.clear();
    lagrangian_ = evaluateAt(x_);
    differentiate();
}

}  // namespace engine
