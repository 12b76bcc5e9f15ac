#include "search/exact_equality.hpp"

#include <cmath>

namespace engine {
namespace {

std::size_t index(std::int32_t i) {
    return static_cast<std::size_t>(i);
}

double gapOf(const Restriction& equation, std::span<const Value> values) {
    return values[index(equation.left)].asDouble() - values[index(equation.right)].asDouble();
}

}  // namespace

/// The float whose last bit moves the gap least, among those that move it well.
void ExactEquality::chooseFloat(const Restriction& equation, std::span<const Value> values) {
    constexpr double well = 0.01;
    gradient_.clear();
    gradient_.addWeight(equation.left, 1.0);
    gradient_.addWeight(equation.right, -1.0);
    gradient_.accumulate(values);
    double steepest = 0.0;
    for (const DecisionIndex d : floats_) {
        steepest = std::fmax(steepest, std::fabs(gradient_.byDecision(d)));
    }
    chosen_ = floats_.size();
    double finest = HUGE_VAL;
    for (std::size_t k = 0; k < floats_.size(); ++k) {
        const double slope = gradient_.byDecision(floats_[k]);
        if (slope == 0.0 || std::fabs(slope) < well * steepest) continue;
        const double x = values[index(model_.decision[index(floats_[k])])].asDouble();
        const double grain = std::fabs(slope * x);
        if (grain >= finest) continue;
        finest = grain;
        chosen_ = k;
        slope_ = slope;
    }
}

void ExactEquality::close(const Restriction& equation, Point& point, std::vector<Value>& values) {
    constexpr int mostEquations = 100;
    constexpr int mostSteps = 10;
    if (gapOf(equation, values) == 0.0 || ++nbTried_ > mostEquations) return;
    evaluation_.setTargets(sidesOf({&equation, 1}));
    // Another equation's float may have moved the sides.
    evaluation_.evaluate(values);
    chooseFloat(equation, values);
    if (chosen_ == floats_.size()) return;
    const DecisionIndex d = floats_[chosen_];
    Value& level = values[index(model_.decision[index(d)])];
    const Value start = level;
    for (int step = 0; step < mostSteps; ++step) {
        const double gap = gapOf(equation, values);
        if (gap == 0.0) break;
        const double x = level.asDouble();
        double next = x - gap / slope_;
        if (next == x) next = std::nextafter(x, gap / slope_ > 0.0 ? -HUGE_VAL : HUGE_VAL);
        if (!(next >= domain_[index(d)].lower && next <= domain_[index(d)].upper)) break;
        level = Value::ofDouble(next);
        evaluation_.evaluate(values);
    }
    if (gapOf(equation, values) != 0.0) {
        level = start;
        evaluation_.evaluate(values);
        return;
    }
    point[index(d)] = level;
    floats_.erase(floats_.begin() + static_cast<std::ptrdiff_t>(chosen_));
}

}  // namespace engine
