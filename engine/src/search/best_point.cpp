#include "search/best_point.hpp"

#include <utility>

namespace engine {
namespace {

bool isPreferred(const ClosedModel& model, const Incumbent& a, const Incumbent& b) {
    if (isBetter(model, a.verdict, b.verdict)) return true;
    return !a.verdict.feasible && !b.verdict.feasible && a.violation < b.violation;
}

}  // namespace

void BestPoint::offer(const Point& point, const Evaluator& evaluator) {
    Incumbent offered{point, judge(model_, point, values_), evaluator.violation()};
    if (isFirst_ || isPreferred(model_, offered, confirmed_)) confirmed_ = std::move(offered);
    claimed_ = confirmed_;
    hasClaim_ = isFirst_ = false;
    noteAllMoved();
}

void BestPoint::adopt(const Incumbent& incumbent) {
    if (!isFirst_ && !isPreferred(model_, incumbent, confirmed_)) return;
    confirmed_ = incumbent;
    claimed_ = incumbent;
    hasClaim_ = isFirst_ = false;
    noteAllMoved();
}

void BestPoint::noteMoved(DecisionIndex d) {
    const auto i = static_cast<std::size_t>(d);
    if (isMoved_[i] != 0) return;
    isMoved_[i] = 1;
    moved_.push_back(d);
}

void BestPoint::noteAllMoved() {
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) noteMoved(d);
}

bool BestPoint::claim(const Evaluator& evaluator) {
    candidate_.feasible = evaluator.isFeasible();
    const double violation = evaluator.violation();
    if (!candidate_.feasible && (claimed_.verdict.feasible || violation >= claimed_.violation)) {
        return false;
    }
    candidate_.objectives.clear();
    for (const Objective& o : model_.objective) {
        candidate_.objectives.push_back(evaluator.valueOf(o.expression));
    }
    if (candidate_.feasible && !isBetter(model_, candidate_, claimed_.verdict)) return false;
    for (const DecisionIndex d : moved_) {
        claimed_.point[static_cast<std::size_t>(d)] = evaluator.decisionValue(d);
        isMoved_[static_cast<std::size_t>(d)] = 0;
    }
    moved_.clear();
    std::swap(claimed_.verdict, candidate_);
    claimed_.violation = violation;
    hasClaim_ = true;
    return true;
}

bool BestPoint::confirm() {
    if (!hasClaim_) return true;
    hasClaim_ = false;
    const bool claimedFeasible = claimed_.verdict.feasible;
    claimed_.verdict = judge(model_, claimed_.point, values_);
    if (claimed_.verdict.feasible) claimed_.violation = 0.0;
    if (isPreferred(model_, claimed_, confirmed_)) {
        confirmed_ = claimed_;
        if (claimed_.verdict.feasible || !claimedFeasible) return true;
    }
    claimed_ = confirmed_;
    noteAllMoved();
    return false;
}

}  // namespace engine
