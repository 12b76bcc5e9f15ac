#include "prove/prepare.hpp"

#include <algorithm>
#include <cmath>

#include "prove/exact_back_end.hpp"
#include "prove/exact_proof.hpp"
#include "prove/exhaustion.hpp"
#include "prove/incumbent.hpp"
#include "prove/propagator.hpp"

namespace engine {
namespace {

using Outcome = Preparation::Outcome;

/// Spaces up to the small size are enumerated at once; larger ones after the exact back end, which
/// is much faster where it applies.
constexpr double smallSpace = 4096.0;
constexpr double largestSpace = 2e6;
/// An enumerated space of that size has at most about twice as many nodes.
constexpr std::int64_t largestNbNodes = 4'000'000;

std::int64_t propagationWork(const ClosedModel& model) {
    return 100'000 + 8 * static_cast<std::int64_t>(model.operand.size() + model.op.size());
}

std::vector<Interval> domainsOf(const ClosedModel& model, const Propagator& propagator) {
    std::vector<Interval> domain(model.domain.size());
    for (DecisionIndex d = 0; d < model.nbDecisions(); ++d) {
        domain[static_cast<std::size_t>(d)] = propagator.domainOf(d);
    }
    return domain;
}

bool someIsEmpty(const std::vector<Interval>& domain) {
    return std::any_of(domain.begin(), domain.end(), [](const Interval& i) { return i.isEmpty(); });
}

/// `bound` moved into `i` by what propagation allows beyond the judge's tolerance: no farther than
/// to the middle.
double inside(const Interval& i, double bound) {
    const double step = std::min(0.5 * (i.upper - i.lower),
                                 10.0 * relationTolerance * std::max(1.0, std::fabs(bound)));
    return bound == i.lower ? bound + step : bound - step;
}

/// `start` with every decision moved to the nearest value of its domain; near its bounds, reals
/// whose bounds come from constraints.
Point movedInto(const ClosedModel& model, const std::vector<Interval>& domain, Point start) {
    const auto isReal = [&model](DecisionIndex d) { return !model.isDiscrete(d); };
    for (DecisionIndex d = 0; d < model.nbDecisions(); ++d) {
        const Interval& i = domain[static_cast<std::size_t>(d)];
        Value& value = start[static_cast<std::size_t>(d)];
        const double v = value.asDouble();
        if (v < i.lower) value = valueFor(model, d, isReal(d) ? inside(i, i.lower) : i.lower);
        if (v > i.upper) value = valueFor(model, d, isReal(d) ? inside(i, i.upper) : i.upper);
    }
    return start;
}

/// The proofs in turn, each on what the one before has left open.
class Prover {
public:
    Prover(const ClosedModel& model, const Point& start, const ProveLimits& limits)
        : model_(model), start_(start), limits_(limits), propagator_(model), incumbent_(model) {}

    Preparation run();

private:
    void propagate();
    void closeTrivially();
    void enumerate(double largest);
    void solveExactly();
    void conclude(Outcome outcome, std::string proof) {
        result_.outcome = outcome;
        result_.proof = std::move(proof);
    }
    [[nodiscard]] bool isOpen() const { return result_.outcome == Outcome::Open; }
    [[nodiscard]] std::int64_t budgetLeft() const {
        return std::max<std::int64_t>(0, limits_.iterations - result_.iterations);
    }

    const ClosedModel& model_;
    Point start_;
    const ProveLimits& limits_;
    Propagator propagator_;
    ProvedIncumbent incumbent_;
    Preparation result_;
};

void Prover::propagate() {
    result_.domain = model_.domain;
    if (someIsEmpty(model_.domain)) {
        return conclude(Outcome::Inconsistent, "a decision has an empty domain");
    }
    if (!propagator_.start(model_.domain, propagationWork(model_))) {
        return conclude(Outcome::Inconsistent, "interval propagation");
    }
    result_.domain = domainsOf(model_, propagator_);
}

/// The start and the start moved into the tightened domains, against the objectives' bounds.
void Prover::closeTrivially() {
    incumbent_.offer(start_);
    const Point moved = movedInto(model_, result_.domain, start_);
    incumbent_.offer(moved);
    start_ = moved;
    if (cannotImprove(model_, propagator_, incumbent_)) {
        return conclude(Outcome::Optimal, model_.objective.empty()
                                              ? "no objective, and a feasible point"
                                              : "interval propagation");
    }
    const bool allFixed = std::all_of(result_.domain.begin(), result_.domain.end(),
                                      [](const Interval& i) { return i.lower == i.upper; });
    if (!allFixed) return;
    conclude(incumbent_.hasPoint() ? Outcome::Optimal : Outcome::Inconsistent,
             "interval propagation leaves a single point");
}

void Prover::enumerate(double largest) {
    if (budgetLeft() == 0 || sizeOfSpace(model_, propagator_) > largest) return;
    std::int64_t nbNodes = std::min(budgetLeft(), largestNbNodes);
    const bool complete = exhaust(model_, propagator_, incumbent_, start_, limits_, nbNodes);
    result_.iterations += nbNodes;
    if (!complete) return;
    conclude(incumbent_.hasPoint() ? Outcome::Optimal : Outcome::Inconsistent,
             "enumeration of all discrete points");
}

void Prover::solveExactly() {
    if (!limits_.useExactBackEnd || limits_.shouldStop()) return;
    ProveLimits rest = limits_;
    rest.iterations = budgetLeft();
    ExactProof exact = proveExactly(model_, propagator_, start_, incumbent_, rest);
    result_.iterations += exact.effort;
    if (exact.outcome != Outcome::Open) conclude(exact.outcome, std::move(exact.proof));
}

Preparation Prover::run() {
    propagate();
    if (isOpen()) closeTrivially();
    if (isOpen()) enumerate(smallSpace);
    if (isOpen()) solveExactly();
    if (isOpen()) enumerate(largestSpace);
    result_.hasPoint = incumbent_.hasPoint();
    if (result_.hasPoint) result_.point = incumbent_.point();
    return std::move(result_);
}

}  // namespace

bool propagateDomains(const ClosedModel& model, std::vector<Interval>& domain) {
    if (someIsEmpty(domain)) return false;
    Propagator propagator(model);
    if (!propagator.start(domain, propagationWork(model))) return false;
    domain = domainsOf(model, propagator);
    return true;
}

Preparation prepare(const ClosedModel& model, const Point& start, const ProveLimits& limits) {
    return Prover(model, start, limits).run();
}

std::string backEndNames() {
    return std::string(exactBackEndName());
}

}  // namespace engine
