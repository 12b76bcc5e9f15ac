// The filter and the line search of the interior point method.
#include <algorithm>
#include <cmath>
#include <utility>

#include "nonlinear/interior_point_method.hpp"

namespace engine {
namespace {

constexpr double armijo = 1e-4;
constexpr int mostHalvings = 30;

}  // namespace

bool InteriorPoint::isAcceptable(double theta, double cost) const {
    if (!(theta <= largestTheta_) || std::isnan(cost)) return false;
    return std::none_of(filter_.begin(), filter_.end(),
                        [&](const FilterEntry& f) { return theta >= f.theta && cost >= f.cost; });
}

/// Progress by the current point's measure: of the cost where the rows hold, else of either.
bool InteriorPoint::accepts(double length, double slope, double theta, double cost) const {
    if (!isAcceptable(theta, cost)) return false;
    const double thetaNow = at_.theta();
    const double costNow = barrierCost(z_, at_);
    const double rounding = 10.0 * std::numeric_limits<double>::epsilon() * std::fabs(costNow);
    const bool isCostStep = slope < 0.0 && thetaNow <= smallTheta_ &&
                            length * std::pow(-slope, 2.3) > std::pow(thetaNow, 1.1);
    if (isCostStep) return cost - costNow - rounding <= armijo * length * slope;
    return theta <= (1.0 - leastThetaGain) * thetaNow ||
           cost - rounding <= costNow - leastCostGain * thetaNow;
}

void InteriorPoint::take(const Vector& z, Values at) {
    z_ = z;
    at_ = std::move(at);
}

void InteriorPoint::takeDuals() {
    const double keep = std::max(0.99, 1.0 - barrier_);
    const double length = longestDualStep(keep);
    constexpr double reach = 1e10;
    for (std::size_t j = 0; j < nbPrimal_; ++j) {
        const auto kept = [&](double dual, double step, double distance) {
            if (!std::isfinite(distance)) return 0.0;
            const double centred = barrier_ / distance;
            return std::clamp(dual + length * step, centred / reach, centred * reach);
        };
        lowerDual_[j] = kept(lowerDual_[j], lowerDualStep_[j], z_[j] - lower_[j]);
        upperDual_[j] = kept(upperDual_[j], upperDualStep_[j], upper_[j] - z_[j]);
    }
}

/// One trial of the line search; a first one that violates more gets a second-order correction.
bool InteriorPoint::tryStep(double length, const Vector& direction, double slope, bool isFirst) {
    Vector trial = z_;
    for (std::size_t j = 0; j < nbPrimal_; ++j) trial[j] += length * direction[j];
    Values at = evaluate(trial);
    if (!at.isFinite) return false;
    const double cost = barrierCost(trial, at);
    if (!accepts(length, slope, at.theta(), cost)) {
        return isFirst && at.theta() >= at_.theta() && tryCorrection(length, at, slope);
    }
    const double thetaNow = at_.theta();
    const double costNow = barrierCost(z_, at_);
    const bool isCostStep =
        slope < 0.0 && thetaNow <= smallTheta_ && cost <= costNow + armijo * length * slope;
    if (!isCostStep) {
        filter_.push_back({(1.0 - leastThetaGain) * thetaNow, costNow - leastCostGain * thetaNow});
    }
    take(trial, std::move(at));
    for (std::size_t i = 0; i < nbRows_; ++i) y_[i] += length * step_[nbPrimal_ + i];
    return true;
}

/// The step again, towards rows as they are at the trial point (section 2.4).
bool InteriorPoint::tryCorrection(double length, const Values& trial, double slope) {
    const Vector g = barrierGradient();
    Vector side = dualResidual();
    side.resize(nbPrimal_ + nbRows_);
    for (std::size_t j = 0; j < nbPrimal_; ++j) {
        side[j] = -(side[j] + g[j] - gradient_[j] - upperDual_[j] + lowerDual_[j]);
    }
    for (std::size_t i = 0; i < nbRows_; ++i) {
        side[nbPrimal_ + i] = -(length * at_.rows[i] + trial.rows[i]);
    }
    system_.solve(side);
    if (!std::isfinite(largest(side))) return false;
    const double corrected = longestStep(z_, side, std::max(0.99, 1.0 - barrier_));
    return tryStep(corrected, side, slope, /*isFirst=*/false);
}

bool InteriorPoint::search() {
    const Vector g = barrierGradient();
    double slope = 0.0;
    double size = 0.0;
    for (std::size_t j = 0; j < nbPrimal_; ++j) {
        slope += g[j] * step_[j];
        size = std::max(size, std::fabs(step_[j]) / (1.0 + std::fabs(z_[j])));
    }
    double length = longestStep(z_, step_, std::max(0.99, 1.0 - barrier_));
    // Steps at the edge of rounding tell nothing about progress: they are taken as they are.
    constexpr double tiny = 1e-15;
    if (size < tiny) {
        Vector trial = z_;
        for (std::size_t j = 0; j < nbPrimal_; ++j) trial[j] += length * step_[j];
        Values at = evaluate(trial);
        if (!at.isFinite) return false;
        take(trial, std::move(at));
        for (std::size_t i = 0; i < nbRows_; ++i) y_[i] += length * step_[nbPrimal_ + i];
        return true;
    }
    for (int k = 0; k < mostHalvings; ++k, length *= 0.5) {
        if (tryStep(length, step_, slope, k == 0)) return true;
    }
    return false;
}

}  // namespace engine
