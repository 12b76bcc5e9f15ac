#pragma once

#include <vector>

#include "evaluate/judge.hpp"
#include "model/closed_model.hpp"

namespace engine {

/// The best judged point while proving.
class ProvedIncumbent {
public:
    explicit ProvedIncumbent(const ClosedModel& model) : model_(model) {}

    /// Judges `point` and keeps it if it is feasible and better than what there is.
    bool offer(const Point& point) {
        Verdict verdict = judge(model_, point, values_);
        const bool better = verdict.feasible && (!hasPoint_ || isBetter(model_, verdict, verdict_));
        if (better) {
            point_ = point;
            verdict_ = std::move(verdict);
            hasPoint_ = true;
        }
        return better;
    }
    [[nodiscard]] bool hasPoint() const { return hasPoint_; }
    [[nodiscard]] const Point& point() const { return point_; }
    /// Only when hasPoint().
    [[nodiscard]] const Verdict& verdict() const { return verdict_; }

private:
    const ClosedModel& model_;
    Point point_;
    Verdict verdict_;
    std::vector<Value> values_;
    bool hasPoint_ = false;
};

}  // namespace engine
