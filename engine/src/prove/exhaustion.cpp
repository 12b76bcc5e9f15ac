#include "prove/exhaustion.hpp"

#include <algorithm>

namespace engine {
namespace {

/// Operands that propagation may look at below one node, per operand of the model.
constexpr std::int64_t workPerNode = 20;
/// Nodes between two questions whether to stop.
constexpr std::int64_t nodesBetweenQuestions = 64;
/// Operands looked at in the whole enumeration: some seconds.
constexpr std::int64_t largestWork = 400'000'000;

bool isUsed(const ClosedModel& model, DecisionIndex d) {
    const ExpressionIndex e = model.decision[static_cast<std::size_t>(d)];
    if (!model.usersOf(e).empty()) return true;
    const auto isIt = [e](const Objective& o) { return o.expression == e; };
    return std::find(model.constraint.begin(), model.constraint.end(), e) !=
               model.constraint.end() ||
           std::any_of(model.objective.begin(), model.objective.end(), isIt);
}

/// Depth-first search with an explicit stack.
class Enumeration {
public:
    Enumeration(const ClosedModel& model, Propagator& propagator, ProvedIncumbent& incumbent,
                const Point& start, Pace& pace, std::int64_t mostNodes)
        : model_(model),
          propagator_(propagator),
          incumbent_(incumbent),
          point_(start),
          pace_(pace),
          mostNodes_(mostNodes),
          workEnd_(propagator.work() + largestWork) {
        for (DecisionIndex d = 0; d < model.nbDecisions(); ++d) {
            if (isUsed(model, d)) decisions_.push_back(d);
        }
        // Small domains first: they decide most.
        std::stable_sort(decisions_.begin(), decisions_.end(),
                         [this](DecisionIndex a, DecisionIndex b) { return size(a) < size(b); });
    }

    bool run();

private:
    struct Level {
        std::size_t position;  ///< in decisions_: the decision branched on
        double next;           ///< value to try next
        double last;
        std::size_t mark;
    };

    [[nodiscard]] double size(DecisionIndex d) const {
        const Interval i = propagator_.domainOf(d);
        return i.upper - i.lower;
    }
    void branchOrJudge(std::size_t position);
    [[nodiscard]] bool mayGoOn();

    const ClosedModel& model_;
    Propagator& propagator_;
    ProvedIncumbent& incumbent_;
    Point point_;
    Pace& pace_;
    std::int64_t mostNodes_;
    std::int64_t workEnd_;
    std::vector<DecisionIndex> decisions_;
    std::vector<Level> levels_;
    std::int64_t nbNodes_ = 0;
};

/// The next open decision becomes a level; without one the point is complete.
void Enumeration::branchOrJudge(std::size_t position) {
    while (position < decisions_.size() && size(decisions_[position]) == 0.0) ++position;
    if (position < decisions_.size()) {
        const Interval i = propagator_.domainOf(decisions_[position]);
        levels_.push_back({position, i.lower, i.upper, propagator_.mark()});
        return;
    }
    for (const DecisionIndex d : decisions_) {
        point_[static_cast<std::size_t>(d)] = valueFor(model_, d, propagator_.domainOf(d).lower);
    }
    incumbent_.offer(point_);
}

bool Enumeration::mayGoOn() {
    if (nbNodes_ >= mostNodes_ || propagator_.work() > workEnd_) return false;
    if (nbNodes_ % nodesBetweenQuestions == 0 && pace_.mustEnd()) return false;
    ++nbNodes_;
    return pace_.spend(1);
}

bool Enumeration::run() {
    const std::size_t root = propagator_.mark();
    const std::int64_t nodeWork =
        1000 + workPerNode * static_cast<std::int64_t>(model_.operand.size());
    bool complete = true;
    branchOrJudge(0);
    while (!levels_.empty()) {
        Level& level = levels_.back();
        propagator_.undoTo(level.mark);
        if (level.next > level.last) {
            levels_.pop_back();
            continue;
        }
        if (!mayGoOn()) {
            complete = false;
            break;
        }
        const double value = level.next;
        const std::size_t position = level.position;
        level.next += 1.0;
        if (propagator_.restrictDecision(decisions_[position], {value, value}, nodeWork) &&
            !cannotImprove(model_, propagator_, incumbent_)) {
            branchOrJudge(position + 1);
        }
    }
    propagator_.undoTo(root);
    return complete;
}

}  // namespace

Value valueFor(const ClosedModel& model, DecisionIndex d, double value) {
    return model.isDiscrete(d) ? Value::ofInt(static_cast<std::int64_t>(value))
                               : Value::ofDouble(value);
}

double sizeOfSpace(const ClosedModel& model, const Propagator& propagator) {
    double size = 1.0;
    for (DecisionIndex d = 0; d < model.nbDecisions(); ++d) {
        const Interval i = propagator.domainOf(d);
        if (i.lower == i.upper || !isUsed(model, d)) continue;
        if (!model.isDiscrete(d)) return infinity;
        size *= i.upper - i.lower + 1.0;
    }
    return size;
}

bool cannotImprove(const ClosedModel& model, const Propagator& propagator,
                   const ProvedIncumbent& incumbent) {
    if (!incumbent.hasPoint()) return false;
    for (std::size_t k = 0; k < model.objective.size(); ++k) {
        const Objective& o = model.objective[k];
        const Range r = propagator.rangeOf(o.expression);
        const double value = incumbent.verdict().objectives[k].asDouble();
        if (std::isnan(value)) return false;
        const double bound = o.maximise ? r.upper : r.lower;
        if (bound == value) continue;
        return o.maximise ? bound < value : bound > value;
    }
    return true;
}

bool exhaust(const ClosedModel& model, Propagator& propagator, ProvedIncumbent& incumbent,
             const Point& start, Pace& pace, std::int64_t mostNodes) {
    return Enumeration(model, propagator, incumbent, start, pace, mostNodes).run();
}

}  // namespace engine
