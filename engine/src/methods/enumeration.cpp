#include "methods/enumeration.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "model/domain.hpp"
#include "model/refusal.hpp"

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

/// A space of the largest size has at most about twice as many nodes.
constexpr std::int64_t largestNbNodes = 4'000'000;

/// Depth-first search with an explicit stack.
class Enumeration {
public:
    Enumeration(Ground& ground, FeasibleIncumbent& incumbent, std::string_view finder, Pace& pace)
        : model_(ground.model),
          propagator_(ground.propagator),
          incumbent_(incumbent),
          finder_(finder),
          point_(ground.start),
          pace_(pace),
          workTold_(propagator_.work()),
          workEnd_(propagator_.work() + largestWork) {
        for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) {
            if (isUsed(model_, d)) decisions_.push_back(d);
        }
        // Small domains first: they decide most.
        std::stable_sort(decisions_.begin(), decisions_.end(),
                         [this](DecisionIndex a, DecisionIndex b) { return size(a) < size(b); });
    }

    /// @return whether the whole space was searched; otherwise that were too many nodes, or the
    /// pace
    ///         has ended.
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
    Propagator& propagator_;  ///< left as it was
    FeasibleIncumbent& incumbent_;
    std::string_view finder_;
    Point point_;  ///< decisions that nothing depends on keep their start
    Pace& pace_;
    std::int64_t workTold_;  ///< of the propagator's, that the pace knows of
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
    incumbent_.offer(point_, finder_);
}

bool Enumeration::mayGoOn() {
    constexpr std::int64_t workOfNode = 100;
    if (nbNodes_ >= largestNbNodes || propagator_.work() > workEnd_) return false;
    if (nbNodes_ % nodesBetweenQuestions == 0 && pace_.mustEnd()) return false;
    ++nbNodes_;
    const std::int64_t told = std::exchange(workTold_, propagator_.work());
    return pace_.spend(workOfNode + workTold_ - told);
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

class EnumerationMethod final : public Method {
public:
    EnumerationMethod(Ground& ground, double largest) : Method(ground), largest_(largest) {}
    [[nodiscard]] std::string_view name() const override { return "enumeration"; }
    [[nodiscard]] std::string reasonAgainst() override;
    [[nodiscard]] double weight() const override { return largest_ > smallSpace ? 1.0 : infinity; }
    void run(Pace& pace) override;

private:
    double largest_;
};

std::string EnumerationMethod::reasonAgainst() {
    const double size = sizeOfSpace(model(), ground().propagator);
    if (std::isinf(size)) return "some decisions are continuous, or their domains endless";
    if (size <= largest_) return {};
    return formatText("%.3g points are too many", size);
}

void EnumerationMethod::run(Pace& pace) {
    FeasibleIncumbent& incumbent = findings().incumbent;
    if (pace.mustEnd() || !Enumeration(ground(), incumbent, name(), pace).run()) return;
    conclude(incumbent.hasPoint() ? Outcome::Optimal : Outcome::Inconsistent,
             "enumeration of all discrete points");
}

}  // namespace

std::unique_ptr<Method> makeEnumeration(Ground& ground, double largest) {
    return std::make_unique<EnumerationMethod>(ground, largest);
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
                   const FeasibleIncumbent& incumbent) {
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

}  // namespace engine
