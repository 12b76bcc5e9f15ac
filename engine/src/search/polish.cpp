#include "search/polish.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "evaluate/gradient.hpp"
#include "search/exact_equality.hpp"
#include "search/restoration.hpp"

namespace engine {
namespace {

constexpr std::size_t mostOperands = 50'000;
constexpr std::int64_t mostWork = 5'000'000;
/// Scaled excess of the constraints below which there is nothing to gain.
constexpr double tight = 1e-9;

std::size_t index(std::int32_t i) {
    return static_cast<std::size_t>(i);
}

/// Without tolerance; a NaN does not hold.
bool holdsExactly(const Restriction& r, std::span<const Value> values) {
    const double excess = r.excess(values);
    return r.isEquation ? excess == 0.0 : excess <= 0.0;
}

class Polish {
public:
    Polish(const ClosedModel& model, const std::vector<Interval>& domain, const Point& point);
    std::optional<Point> run(bool isProved);

private:
    struct State {
        Point point;
        std::vector<Value> values;
        Verdict verdict;
        double excess = 0.0;        ///< largest of the constraints, scaled
        std::size_t nbInexact = 0;  ///< guards that hold by tolerance only
    };
    [[nodiscard]] State stateOf(Point point) const;
    [[nodiscard]] State restored(std::vector<Restriction> restrictions);
    [[nodiscard]] State guarded();
    [[nodiscard]] bool isGain(const State& state, bool isProved) const;
    [[nodiscard]] bool isLossExplained(const State& state, double generosity) const;

    const ClosedModel& model_;
    const std::vector<Interval>& domain_;
    Evaluator evaluator_;
    std::vector<DecisionIndex> floats_;
    std::vector<Restriction> constraints_;
    Restoration restoration_;
    State before_;
};

Polish::Polish(const ClosedModel& model, const std::vector<Interval>& domain, const Point& point)
    : model_(model), domain_(domain), evaluator_(model), restoration_(model, domain) {
    for (DecisionIndex d = 0; d < model.nbDecisions(); ++d) {
        const Interval& interval = domain[index(d)];
        if (!model.isDiscrete(d) && interval.lower < interval.upper) floats_.push_back(d);
    }
    evaluator_.reset(point);
    constraints_ = restrictionsAt(evaluator_);
    before_ = stateOf(point);
}

Polish::State Polish::stateOf(Point point) const {
    State state;
    state.verdict = judge(model_, point, state.values);
    state.point = std::move(point);
    for (const Restriction& r : constraints_) {
        const double excess = r.excess(state.values);
        // fmax hides a NaN.
        if (std::isnan(excess)) state.excess = std::numeric_limits<double>::infinity();
        state.excess = std::fmax(state.excess, r.isEquation ? std::fabs(excess) : excess);
    }
    for (const Restriction& guard : guardsAt(evaluator_.plan(), state.values)) {
        if (!holdsExactly(guard, state.values)) ++state.nbInexact;
    }
    return state;
}

Polish::State Polish::restored(std::vector<Restriction> restrictions) {
    restoration_.start(before_.point, std::move(restrictions), floats_);
    while (restoration_.isRunning() && restoration_.work() < mostWork) restoration_.advance();
    return stateOf(restoration_.point());
}

/// A Restoration ends within a hair of its restrictions. Guards that the hair breaks are asked for
/// with a margin in the next round; equations are closed one by one in the end.
Polish::State Polish::guarded() {
    constexpr int nbRounds = 4;
    constexpr double margin = 1e-9;
    constexpr double fewUlps = 1e-15;
    std::vector<Restriction> guards = guardsAt(evaluator_.plan(), before_.values);
    const auto isBroken = [](const Restriction& guard, const State& state) {
        return !guard.isEquation && !holdsExactly(guard, state.values);
    };
    const auto widen = [&](const State& state) {
        bool isAnyBroken = false;
        for (Restriction& guard : guards) {
            if (!isBroken(guard, state)) continue;
            const double size = std::fabs(state.values[index(guard.left)].asDouble());
            guard.shift += margin * guard.scale + fewUlps * size;
            isAnyBroken = true;
        }
        return isAnyBroken;
    };
    widen(before_);
    State state;
    for (int round = 0; round < nbRounds; ++round) {
        std::vector<Restriction> all = constraints_;
        all.insert(all.end(), guards.begin(), guards.end());
        state = restored(std::move(all));
        if (!widen(state)) break;
    }
    ExactEquality equality(model_, domain_, floats_);
    for (const Restriction& guard : guards) {
        if (guard.isEquation) equality.close(guard, state.point, state.values);
    }
    return stateOf(std::move(state.point));
}

/// Is no objective worse than in the beginning by more than `generosity` times the way times the
/// slope, the larger of the two ends'?
bool Polish::isLossExplained(const State& state, double generosity) const {
    constexpr double rounding = 1e-9;
    Gradient atStart(model_);
    Gradient atEnd(model_);
    for (std::size_t k = 0; k < model_.objective.size(); ++k) {
        const Objective& o = model_.objective[k];
        const double old = before_.verdict.objectives[k].asDouble();
        const double now = state.verdict.objectives[k].asDouble();
        double explained = rounding * std::fmax(1.0, std::fabs(old));
        atStart.clear();
        atStart.addWeight(o.expression, 1.0);
        atStart.accumulate(before_.values);
        atEnd.clear();
        atEnd.addWeight(o.expression, 1.0);
        atEnd.accumulate(state.values);
        for (const DecisionIndex d : floats_) {
            const double way =
                state.point[index(d)].asDouble() - before_.point[index(d)].asDouble();
            const double slope =
                std::fmax(std::fabs(atStart.byDecision(d)), std::fabs(atEnd.byDecision(d)));
            explained += generosity * slope * std::fabs(way);
        }
        if ((o.maximise ? old - now : now - old) > explained) return false;
    }
    return true;
}

bool Polish::isGain(const State& state, bool isProved) const {
    constexpr double muchLess = 0.1;
    // The larger slope suffices where the objective bends one way; twice that serves the others.
    constexpr double generosity = 2.0;
    if (!state.verdict.feasible || state.nbInexact > before_.nbInexact) return false;
    if (state.nbInexact < before_.nbInexact) return isLossExplained(state, generosity);
    // Tightness alone is not worth an optimum.
    return state.excess <= muchLess * before_.excess &&
           isLossExplained(state, isProved ? 0.0 : generosity);
}

std::optional<Point> Polish::run(bool isProved) {
    const bool isTight = before_.excess <= tight;
    if (floats_.empty() || (isTight && before_.nbInexact == 0)) return std::nullopt;
    State state = guarded();
    if (isGain(state, isProved)) return std::move(state.point);
    if (isTight) return std::nullopt;
    state = restored(constraints_);
    if (isGain(state, isProved)) return std::move(state.point);
    return std::nullopt;
}

}  // namespace

std::optional<Point> polished(const ClosedModel& model, const std::vector<Interval>& domain,
                              const Point& point, bool isProved) {
    if (model.operand.size() > mostOperands) return std::nullopt;
    return Polish(model, domain, point).run(isProved);
}

}  // namespace engine
