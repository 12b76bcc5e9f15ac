#include "search/restoration.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace engine {
namespace {

std::size_t index(std::int32_t i) {
    return static_cast<std::size_t>(i);
}

/// Scaled excess at which a point is as good as it gets in doubles.
constexpr double fineExcess = 1e-10;
constexpr int mostSteps = 60;
/// Steps in a row that fail or gain next to nothing before a point counts as stuck.
constexpr int mostWeakSteps = 6;
constexpr double weakGain = 1e-2;
constexpr double firstDamping = 1e-2;
constexpr double leastDamping = 1e-12;
constexpr double infinite = std::numeric_limits<double>::infinity();

}  // namespace

Restoration::Restoration(const ClosedModel& model, const std::vector<Interval>& domain)
    : model_(model), domain_(domain), evaluation_(model), jacobian_(model) {}

void Restoration::start(Point point, std::vector<Restriction> restrictions,
                        std::vector<DecisionIndex> free) {
    restrictions_ = std::move(restrictions);
    jacobian_.clearRows();
    isEquation_.clear();
    for (const Restriction& r : restrictions_) {
        jacobian_.addRow(r.left, r.right, r.sign / r.scale);
        isEquation_.push_back(r.isEquation ? 1 : 0);
    }
    evaluation_.setTargets(sidesOf(restrictions_));
    begin(std::move(point), std::move(free));
}

void Restoration::resume(Point point, std::vector<DecisionIndex> free) {
    begin(std::move(point), std::move(free));
}

void Restoration::begin(Point point, std::vector<DecisionIndex> free) {
    point_ = std::move(point);
    free_ = std::move(free);
    columnOf_.assign(domain_.size(), -1);
    scale_.clear();
    for (std::size_t k = 0; k < free_.size(); ++k) {
        const DecisionIndex d = free_[k];
        columnOf_[index(d)] = static_cast<std::int32_t>(k);
        point_[index(d)] = Value::ofDouble(point_[index(d)].asDouble());
        const double width = domain_[index(d)].upper - domain_[index(d)].lower;
        // A domain may have shrunk to a point since the decision was found to be free.
        const double size = 1.0 + std::fabs(point_[index(d)].asDouble());
        scale_.push_back(width > 0.0 ? std::fmin(width, size) : size);
    }
    judge(model_, point_, values_);
    trialValues_ = values_;
    merit_ = meritOf(values_, excesses_);
    excess_ = largestOf(excesses_);
    rows_ = nullptr;
    damping_ = firstDamping;
    nbSteps_ = nbWeakSteps_ = 0;
    isRunning_ = std::isfinite(merit_) && excess_ > fineExcess && !free_.empty();
}

double Restoration::meritOf(const std::vector<Value>& values, std::vector<double>& excesses) const {
    double sum = 0.0;
    excesses.clear();
    for (const Restriction& r : restrictions_) {
        const double excess = r.excess(values);
        excesses.push_back(excess);
        // fmax hides a NaN.
        if (r.isEquation || !(excess <= 0.0)) sum += 0.5 * excess * excess;
    }
    if (!std::isfinite(sum)) return infinite;
    return sum;
}

double Restoration::largestOf(const std::vector<double>& excesses) const {
    double largest = 0.0;
    for (std::size_t i = 0; i < excesses.size(); ++i) {
        if (std::isnan(excesses[i])) return infinite;
        const double excess = restrictions_[i].isEquation ? std::fabs(excesses[i]) : excesses[i];
        largest = std::fmax(largest, excess);
    }
    return largest;
}

void Restoration::advance() {
    ++nbSteps_;
    if (rows_ == nullptr) {
        rows_ = &jacobian_.compute(values_, columnOf_);
        work_ += static_cast<std::int64_t>(jacobian_.work());
    }
    const double promised = merit_ - computeStep();
    for (std::size_t k = 0; k < free_.size(); ++k) {
        const double x = point_[index(free_[k])].asDouble();
        const Interval& domain = domain_[index(free_[k])];
        trialValues_[index(model_.decision[index(free_[k])])] =
            Value::ofDouble(std::clamp(x + step_[k], domain.lower, domain.upper));
    }
    evaluation_.evaluate(trialValues_);
    work_ += static_cast<std::int64_t>(evaluation_.work());
    const double reached = meritOf(trialValues_, trialExcesses_);
    const double ratio = promised > 0.0 ? (merit_ - reached) / promised : -1.0;
    const bool isWeak = !(reached < merit_ * (1.0 - weakGain));
    constexpr double acceptable = 1e-4;
    if (ratio > acceptable) {
        std::swap(values_, trialValues_);
        for (const DecisionIndex d : free_) {
            point_[index(d)] = values_[index(model_.decision[index(d)])];
        }
        std::swap(excesses_, trialExcesses_);
        merit_ = reached;
        excess_ = largestOf(excesses_);
        rows_ = nullptr;
    }
    constexpr double good = 0.75;
    constexpr double bad = 0.25;
    if (ratio > good) damping_ = std::fmax(leastDamping, damping_ * 0.1);
    if (ratio < bad) damping_ *= ratio > acceptable ? 2.0 : 8.0;
    nbWeakSteps_ = isWeak ? nbWeakSteps_ + 1 : 0;
    isRunning_ = excess_ > fineExcess && nbSteps_ < mostSteps && nbWeakSteps_ < mostWeakSteps;
}

/// step_ within the box. @return the merit that it promises at first order.
double Restoration::computeStep() {
    lower_.clear();
    upper_.clear();
    for (const DecisionIndex d : free_) {
        const double x = point_[index(d)].asDouble();
        lower_.push_back(std::fmin(0.0, domain_[index(d)].lower - x));
        upper_.push_back(std::fmax(0.0, domain_[index(d)].upper - x));
    }
    const double damping = damping_ * std::fmin(1.0, merit_);
    // Some fifty operations of linear algebra take as long as a value of an expression.
    constexpr std::int64_t operationsPerValue = 50;
    const std::int64_t before = leastSquares_.work();
    const double promised = leastSquares_.solve(
        {*rows_, excesses_, isEquation_, lower_, upper_, scale_, damping}, step_);
    work_ += (leastSquares_.work() - before) / operationsPerValue;
    return promised;
}

}  // namespace engine
