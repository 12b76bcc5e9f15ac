#include "search/objective_cut.hpp"

#include <algorithm>
#include <cmath>

namespace engine {

ObjectiveCut::ObjectiveCut(const Evaluator& evaluator)
    : evaluator_(evaluator), objective_(evaluator.plan().model().objective) {
    for (const Objective& o : objective_) {
        const double size = evaluator.plan().sizeOfCoefficients(o.expression);
        scale_.push_back(size > 0.0 && std::isfinite(size) ? size : 1.0);
    }
    best_.resize(objective_.size());
}

void ObjectiveCut::setBest(const std::vector<Value>& objectives) {
    hasBest_ = true;
    for (std::size_t l = 0; l < best_.size(); ++l) best_[l] = objectives[l].asDouble();
}

void ObjectiveCut::activateNextLevel() {
    if (++level_ >= objective_.size()) level_ = 0;
}

double ObjectiveCut::currentOf(std::size_t level) const {
    return evaluator_.valueOf(objective_[level].expression).asDouble();
}

double ObjectiveCut::stepOf(std::size_t level, double relative) const {
    const double size = std::isfinite(best_[level]) ? std::fabs(best_[level]) : 0.0;
    const double step = relative * std::fmax(size, 1e-3 * scale_[level]);
    const auto e = static_cast<std::size_t>(objective_[level].expression);
    const bool isDouble = evaluator_.plan().model().isDouble[e] != 0;
    return isDouble ? step : std::fmax(1.0, step);
}

double ObjectiveCut::weighted() const {
    if (!hasBest_) {
        return weight_ * farAway * static_cast<double>(evaluator_.nbUndefinedObjectives());
    }
    double total = 0.0;
    for (std::size_t l = 0; l < best_.size() && l <= level_; ++l) {
        const double sign = objective_[l].maximise ? -1.0 : 1.0;
        double gap = sign * (currentOf(l) - best_[l]);
        if (l == level_) gap += stepOf(l, ambition_);
        // A NaN on either side has no distance; a current one is as far away as can be.
        if (std::isnan(gap)) gap = std::isnan(currentOf(l)) ? farAway * scale_[l] : 0.0;
        total += std::clamp(gap / scale_[l], 0.0, farAway);
    }
    return weight_ * total;
}

std::optional<ExpressionIndex> ObjectiveCut::undefinedObjective() const {
    for (std::size_t l = 0; l < objective_.size(); ++l) {
        if (std::isnan(currentOf(l))) return objective_[l].expression;
    }
    return std::nullopt;
}

ExpressionIndex ObjectiveCut::expression() const {
    return objective_[level_].expression;
}

Restriction ObjectiveCut::restriction(double relative) const {
    const double sign = objective_[level_].maximise ? -1.0 : 1.0;
    const double best = std::isfinite(best_[level_]) ? best_[level_] : 0.0;
    const double shift = stepOf(level_, relative) - sign * best;
    return {expression(), Restriction::nothing, sign, scale_[level_], shift, /*isEquation=*/false};
}

Goal ObjectiveCut::improvement(double relative) const {
    const int direction = objective_[level_].maximise ? 1 : -1;
    return Goal::ofNumber(currentOf(level_) + direction * stepOf(level_, relative), direction);
}

}  // namespace engine
