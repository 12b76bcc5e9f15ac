#include "search/local_search.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "search/dive_move.hpp"
#include "search/exponential.hpp"

namespace engine {
namespace {

/// What an iteration costs beside the values that it computes, in values.
constexpr double valuesPerIteration = 100.0;
constexpr std::int64_t visitsPerValue = 4;

double initialStep(const Interval& domain) {
    return std::fmin(1.0, 0.1 * (domain.upper - domain.lower));
}

}  // namespace

LocalSearch::LocalSearch(const ClosedModel& model, std::vector<Interval> domain,
                         SearchSettings settings)
    : model_(model),
      domain_(std::move(domain)),
      settings_(settings),
      random_(settings.seed),
      evaluator_(model),
      walk_(evaluator_, domain_, random_),
      cut_(evaluator_),
      best_(model),
      tabuUntil_(domain_.size(), 0) {
    SideMoveSearch& self = *this;
    auto descent = std::make_unique<DescentMove>(self, evaluator_, domain_, cut_);
    auto dive = std::make_unique<DiveMove>(self, evaluator_, domain_, cut_, random_, *descent);
    sideMoves_.push_back(std::move(descent));
    sideMoves_.push_back(std::move(dive));
    stepSize_.reserve(domain_.size());
    for (DecisionIndex d = 0; d < model.nbDecisions(); ++d) {
        stepSize_.push_back(initialStep(domain_[static_cast<std::size_t>(d)]));
    }
    findMovable();
}

void LocalSearch::findMovable() {
    movable_.clear();
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) {
        const Interval& interval = domain_[static_cast<std::size_t>(d)];
        if (interval.lower < interval.upper) movable_.push_back(d);
    }
}

/// The inverse walk and the side moves look at the same domains.
void LocalSearch::tighten(const std::vector<Interval>& domain) {
    Point here;
    for (std::size_t d = 0; d < domain_.size(); ++d) {
        const Interval both{std::fmax(domain_[d].lower, domain[d].lower),
                            std::fmin(domain_[d].upper, domain[d].upper)};
        if (!both.isEmpty()) domain_[d] = both;
        here.push_back(evaluator_.decisionValue(static_cast<DecisionIndex>(d)));
    }
    findMovable();
    moveTo(here);
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) best_.noteMoved(d);
}

void LocalSearch::startFrom(const Point& point) {
    moveTo(point);
    Point inside(point.size());
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) {
        inside[static_cast<std::size_t>(d)] = evaluator_.decisionValue(d);
    }
    best_.offer(inside, evaluator_);
    if (best_.incumbent().verdict.feasible) cut_.setBest(best_.incumbent().verdict.objectives);
    resetWeights();
}

void LocalSearch::moveTo(const Point& point) {
    Point inside = point;
    for (std::size_t d = 0; d < inside.size(); ++d) {
        const Interval& domain = domain_[d];
        const double v = point[d].asDouble();
        // NaN goes to the value nearest to 0.
        const double nearest = std::clamp(std::isnan(v) ? 0.0 : v, domain.lower, domain.upper);
        if (nearest == v) continue;
        inside[d] = model_.isDiscrete(static_cast<DecisionIndex>(d))
                        ? Value::ofInt(static_cast<std::int64_t>(nearest))
                        : Value::ofDouble(nearest);
    }
    evaluator_.reset(inside);
}

void LocalSearch::adopt(const Incumbent& incumbent) {
    const bool wasFeasible = best_.incumbent().verdict.feasible;
    best_.adopt(incumbent);
    if (!best_.incumbent().verdict.feasible) return;
    cut_.setBest(best_.incumbent().verdict.objectives);
    // Who has no feasible point yet goes on from the one that was found; others keep their place,
    // for the sake of diversity.
    if (!wasFeasible) restart();
}

void LocalSearch::run(std::int64_t nbIterations, const std::atomic<bool>& stop) {
    for (std::int64_t n = 0; n < nbIterations && !stop.load(std::memory_order_relaxed); ++n) step();
    confirm();
}

void LocalSearch::spend(std::int64_t work, const std::atomic<bool>& stop) {
    workLeft_ += work;
    statistics_.work += work;
    while (workLeft_ > 0 && !stop.load(std::memory_order_relaxed)) workLeft_ -= step();
    if (workLeft_ > 0) statistics_.work -= std::exchange(workLeft_, 0);
    confirm();
}

std::int64_t LocalSearch::step() {
    ++statistics_.iterations;
    work_ = 0;
    if (movable_.empty()) return visitsPerValue * static_cast<std::int64_t>(valuesPerIteration);
    iterate();
    const double spent = valuesPerIteration + static_cast<double>(work_);
    const bool isFeasible = best_.claimed().verdict.feasible;
    const std::int64_t before = workBeside();
    for (const std::unique_ptr<SideMove>& move : sideMoves_) {
        const SideMove::Shares shares = move->shares();
        if (move->isUseful()) move->run((isFeasible ? shares.feasible : shares.infeasible) * spent);
    }
    return visitsPerValue * (static_cast<std::int64_t>(spent) + workBeside() - before);
}

std::int64_t LocalSearch::workBeside() const {
    std::int64_t work = 0;
    for (const std::unique_ptr<SideMove>& move : sideMoves_) work += move->work();
    return work;
}

void LocalSearch::confirm() {
    if (!best_.confirm()) moveTo(best_.incumbent().point);
}

void LocalSearch::iterate() {
    constexpr std::int64_t iterationsPerDecision = 20;
    const std::int64_t patience =
        500 + iterationsPerDecision * static_cast<std::int64_t>(movable_.size());
    if (++sinceProgress_ > patience) restart();
    sinceFeasible_ = evaluator_.isFeasible() ? 0 : sinceFeasible_ + 1;

    const std::optional<Wish> wish = makeWish();
    if (!wish) return;
    const double before = score();
    const std::optional<Candidate> best = drawCandidates(*wish);
    if (best && accepts(before, best->score)) {
        apply(best->move);
        accept();
        return;
    }
    if (best && tryChain(best->move, before)) {
        accept();
        return;
    }
    raiseWeights();
    // Weights alone may swing between two points for long: now and then a loss is taken at once.
    if (best && random_.chance(strategy_.lossShare)) {
        apply(best->move);
        accept();
    }
}

std::optional<LocalSearch::Wish> LocalSearch::makeWish() {
    const auto& violated = evaluator_.ledger().violated();
    constexpr double objectiveShare = 0.1;
    const bool mayWantObjective = violated.empty() || random_.chance(objectiveShare);
    if (mayWantObjective && !cut_.isActive()) {
        // Any number does.
        if (const auto e = cut_.undefinedObjective()) return Wish{*e, Goal::ofNumber(1.0, 0)};
    }
    if (mayWantObjective && cut_.isActive()) {
        // The objective's promising steps differ by orders of magnitude and change as it goes.
        const double relative = powerOfTen(1.0 - 6.0 * random_.unit());
        return Wish{cut_.expression(), cut_.improvement(relative)};
    }
    if (violated.empty()) return std::nullopt;
    const std::size_t entry = violated[random_.below(violated.size())];
    return Wish{evaluator_.plan().constraints()[entry], Goal::ofTruth(true)};
}

void LocalSearch::apply(const DecisionMove& move) {
    evaluator_.set(move.decision, move.value);
    evaluator_.propagate();
    moved_.push_back(move.decision);
}

bool LocalSearch::accepts(double before, double after) {
    const double loss = after - before;
    const double leastGain = 1e-12 * (1.0 + std::fabs(before));
    if (loss < -leastGain) return true;
    if (settings_.annealingLevel == 0) return false;
    typicalLoss_ += 0.01 * (std::fmax(loss, 0.0) - typicalLoss_);
    // Metropolis' rule; at level 1 a typical loss is accepted about once in e^20 times, so that
    // in effect only plateaus and shallow valleys are crossed; at level 9 once in e^2.
    const double temperature = 0.05 * settings_.annealingLevel * typicalLoss_;
    constexpr double plateauShare = 0.3;
    if (loss <= leastGain) return random_.chance(plateauShare);
    return temperature > 0.0 && random_.chance(exponential(-loss / temperature));
}

void LocalSearch::accept() {
    // Few decisions must not all be tabu at once.
    const std::size_t shortestTenure = std::min<std::size_t>(3, movable_.size() / 4);
    const std::size_t tenureSpread = std::min<std::size_t>(10, 1 + movable_.size() / 3);
    ++statistics_.accepted;
    for (const DecisionIndex d : moved_) {
        best_.noteMoved(d);
        tabuUntil_[static_cast<std::size_t>(d)] =
            statistics_.iterations +
            static_cast<std::int64_t>(shortestTenure + random_.below(tenureSpread));
    }
    moved_.clear();
    evaluator_.commit();
    claim();
}

bool LocalSearch::claim() {
    if (!best_.claim(evaluator_)) return false;
    ++statistics_.improving;
    sinceProgress_ = 0;
    if (best_.claimed().verdict.feasible) cut_.setBest(best_.claimed().verdict.objectives);
    return true;
}

bool LocalSearch::visit(const Point& point) {
    const double before = score();
    const Evaluator::Mark mark = evaluator_.mark();
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) {
        evaluator_.set(d, point[static_cast<std::size_t>(d)]);
        best_.noteMoved(d);
    }
    evaluator_.propagate();
    const bool isBetter = score() < before;
    if (claim() || isBetter) {
        evaluator_.commit();
        return true;
    }
    evaluator_.undoTo(mark);
    return false;
}

}  // namespace engine
