#include "search/continuous_descent.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "evaluate/distance.hpp"
#include "evaluate/operators.hpp"

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
    : plan_(plan), model_(plan.model()), domain_(domain), gradientOf_(plan.model()) {
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
    collect(evaluator);
    penalty_ = firstPenalty;
    lastExcess_ = std::numeric_limits<double>::infinity();
    nbSolved_ = nbSteps_ = 0;
    memory_.clear();
    judge(model_, point_, values_);
    scaleObjective();
    lagrangian_ = evaluateAt(x_);
    differentiate();
    isRunning_ = isUseful() && std::isfinite(lagrangian_);
}

void ContinuousDescent::collect(const Evaluator& evaluator) {
    restrictions_.clear();
    std::vector<Wanted> open;
    for (const ExpressionIndex e : plan_.constraints()) {
        open.push_back({e, true});
        while (!open.empty()) {
            const Wanted wanted = open.back();
            open.pop_back();
            if (plan_.isFixed(wanted.expression)) continue;
            expand(evaluator, wanted, open);
        }
    }
}

void ContinuousDescent::expand(const Evaluator& evaluator, const Wanted& wanted,
                               std::vector<Wanted>& open) {
    const ls_operator op = model_.operatorOf(wanted.expression);
    const auto operands = model_.operandsOf(wanted.expression);
    if (isRelation(op)) {
        addRestriction(evaluator, wanted);
    } else if (op == LS_OP_NOT) {
        open.push_back({operands[0], !wanted.truth});
    } else if ((op == LS_OP_AND && wanted.truth) || (op == LS_OP_OR && !wanted.truth)) {
        for (const ExpressionIndex x : operands) open.push_back({x, wanted.truth});
    } else if ((op == LS_OP_AND || op == LS_OP_OR) && !operands.empty()) {
        const auto cost = [&](ExpressionIndex x) {
            const double margin = evaluator.distanceOf(plan_.logicOf(x)).margin();
            return wanted.truth ? margin : -margin;
        };
        open.push_back({*std::min_element(operands.begin(), operands.end(),
                                          [&](auto a, auto b) { return cost(a) < cost(b); }),
                        wanted.truth});
    }
}

void ContinuousDescent::addRestriction(const Evaluator& evaluator, const Wanted& wanted) {
    const auto sides = model_.operandsOf(wanted.expression);
    const ls_operator asked = model_.operatorOf(wanted.expression);
    const ls_operator op = wanted.truth ? asked : negated(asked);
    const Value left = evaluator.valueOf(sides[0]);
    const Value right = evaluator.valueOf(sides[1]);
    double sign = op == LS_OP_GEQ || op == LS_OP_GT ? -1.0 : 1.0;
    if (op == LS_OP_NEQ) sign = compare(left, right) > 0 ? -1.0 : 1.0;
    const bool isStrict = op == LS_OP_LT || op == LS_OP_GT || op == LS_OP_NEQ;
    const double scale = plan_.scaleOf(plan_.logicOf(wanted.expression));
    const double shift = isStrict ? 2.0 * toleranceBetween(left, right) : 0.0;
    restrictions_.push_back({sides[0], sides[1], sign, scale, shift, op == LS_OP_EQ, 0.0});
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

double ContinuousDescent::excessOf(const Restriction& r) const {
    const double gap = values_[index(r.left)].asDouble() - values_[index(r.right)].asDouble();
    return (r.sign * gap + r.shift) / r.scale;
}

double ContinuousDescent::evaluateAt(const std::vector<double>& x) {
    for (std::size_t k = 0; k < free_.size(); ++k) {
        point_[index(free_[k])] = Value::ofDouble(x[k]);
    }
    judge(model_, point_, values_);
    double total = 0.0;
    if (objective_) total = objectiveScale_ * values_[index(objective_->expression)].asDouble();
    for (const Restriction& r : restrictions_) {
        const double excess = excessOf(r);
        if (r.isEquation) {
            total += excess * (r.multiplier + 0.5 * penalty_ * excess);
        } else {
            const double force = std::fmax(0.0, r.multiplier + penalty_ * excess);
            // fmax hides a NaN.
            total += std::isnan(excess) ? excess : 0.5 * force * force / penalty_;
        }
    }
    return std::isfinite(total) ? total : std::numeric_limits<double>::infinity();
}

void ContinuousDescent::differentiate() {
    gradientOf_.clear();
    if (objective_) gradientOf_.addWeight(objective_->expression, objectiveScale_);
    for (const Restriction& r : restrictions_) {
        double force = r.multiplier + penalty_ * excessOf(r);
        if (!r.isEquation) force = std::fmax(0.0, force);
        const double weight = force * r.sign / r.scale;
        if (weight == 0.0) continue;
        gradientOf_.addWeight(r.left, weight);
        gradientOf_.addWeight(r.right, -weight);
    }
    gradientOf_.accumulate(values_);
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
    for (Restriction& r : restrictions_) {
        const double excess = excessOf(r);
        const double force = r.multiplier + penalty_ * excess;
        const double missed = r.isEquation || force > 0.0 ? std::fabs(excess) : 0.0;
        largest = std::fmax(largest, missed);
        r.multiplier = r.isEquation ? force : std::fmax(0.0, force);
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
