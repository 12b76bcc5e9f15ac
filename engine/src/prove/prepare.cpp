#include "prove/prepare.hpp"

#include <algorithm>
#include <cmath>

#include "back_ends/nonlinear_back_end.hpp"
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

}  // namespace

/// The proofs in turn, each on what the one before has left open.
class Proof::Course {
public:
    Course(const ClosedModel& model, Point start, int seed, bool useExactBackEnd)
        : model_(model),
          start_(std::move(start)),
          seed_(seed),
          useExactBackEnd_(useExactBackEnd),
          propagator_(model),
          incumbent_(model) {}

    void run(Pace& pace);

    Outcome outcome = Outcome::Open;
    std::string text;
    std::vector<Interval> domain;
    std::vector<double> objectiveBound;
    ProofKind kind = ProofKind::Other;

private:
    friend class Proof;

    void propagate();
    void closeTrivially();
    void enumerate(double largest, Pace& pace);
    void solveExactly(Pace& pace);
    void conclude(Outcome reached, std::string proof) {
        outcome = reached;
        text = std::move(proof);
    }
    [[nodiscard]] bool isOpen() const { return outcome == Outcome::Open; }

    const ClosedModel& model_;
    Point start_;
    int seed_;
    bool useExactBackEnd_;
    Propagator propagator_;
    ProvedIncumbent incumbent_;
};

void Proof::Course::propagate() {
    domain = model_.domain;
    if (someIsEmpty(model_.domain)) {
        return conclude(Outcome::Inconsistent, "a decision has an empty domain");
    }
    if (!propagator_.start(model_.domain, propagationWork(model_))) {
        return conclude(Outcome::Inconsistent, "interval propagation");
    }
    domain = domainsOf(model_, propagator_);
    for (const Objective& o : model_.objective) {
        const Range range = propagator_.rangeOf(o.expression);
        objectiveBound.push_back(o.maximise ? range.upper : range.lower);
    }
}

/// The start and the start moved into the tightened domains, against the objectives' bounds.
void Proof::Course::closeTrivially() {
    incumbent_.offer(start_);
    const Point moved = movedInto(model_, domain, start_);
    incumbent_.offer(moved);
    start_ = moved;
    if (cannotImprove(model_, propagator_, incumbent_)) {
        return conclude(Outcome::Optimal, model_.objective.empty()
                                              ? "no objective, and a feasible point"
                                              : "interval propagation");
    }
    const bool allFixed = std::all_of(domain.begin(), domain.end(),
                                      [](const Interval& i) { return i.lower == i.upper; });
    if (!allFixed) return;
    conclude(incumbent_.hasPoint() ? Outcome::Optimal : Outcome::Inconsistent,
             "interval propagation leaves a single point");
}

void Proof::Course::enumerate(double largest, Pace& pace) {
    if (pace.mustEnd() || sizeOfSpace(model_, propagator_) > largest) return;
    if (!exhaust(model_, propagator_, incumbent_, start_, pace, largestNbNodes)) return;
    conclude(incumbent_.hasPoint() ? Outcome::Optimal : Outcome::Inconsistent,
             "enumeration of all discrete points");
}

void Proof::Course::solveExactly(Pace& pace) {
    if (!useExactBackEnd_) return;
    ExactProof exact = proveExactly(model_, propagator_, start_, incumbent_, {pace, seed_, kind});
    kind = ProofKind::Other;
    if (exact.outcome != Outcome::Open) conclude(exact.outcome, std::move(exact.proof));
}

void Proof::Course::run(Pace& pace) {
    propagate();
    if (isOpen()) closeTrivially();
    if (isOpen()) enumerate(smallSpace, pace);
    if (isOpen()) solveExactly(pace);
    if (isOpen()) enumerate(largestSpace, pace);
}

Proof::Proof(const ClosedModel& model, Point start, int seed, bool useExactBackEnd)
    : course_(std::make_unique<Course>(model, std::move(start), seed, useExactBackEnd)) {}

Proof::~Proof() = default;

void Proof::run(Pace& pace) {
    course_->run(pace);
}

void Proof::offer(const Point& point) {
    course_->incumbent_.offer(point);
}

const ProvedIncumbent& Proof::incumbent() const {
    return course_->incumbent_;
}

Preparation::Outcome Proof::outcome() const {
    return course_->outcome;
}

const std::string& Proof::text() const {
    return course_->text;
}

const std::vector<Interval>& Proof::domain() const {
    return course_->domain;
}

const std::vector<double>& Proof::objectiveBound() const {
    return course_->objectiveBound;
}

ProofKind Proof::kind() const {
    return course_->kind;
}

bool propagateDomains(const ClosedModel& model, std::vector<Interval>& domain) {
    if (someIsEmpty(domain)) return false;
    Propagator propagator(model);
    if (!propagator.start(domain, propagationWork(model))) return false;
    domain = domainsOf(model, propagator);
    return true;
}

Preparation prepare(const ClosedModel& model, const Point& start, const ProveLimits& limits) {
    BudgetPace pace(limits.iterations, limits.shouldStop);
    Proof proof(model, start, limits.seed, limits.useExactBackEnd);
    proof.run(pace);
    Preparation result{.outcome = proof.outcome(),
                       .domain = proof.domain(),
                       .hasPoint = proof.incumbent().hasPoint(),
                       .point = {},
                       .iterations = pace.spent(),
                       .proof = proof.text()};
    if (result.hasPoint) result.point = proof.incumbent().point();
    return result;
}

std::string backEndNames() {
    std::string names(exactBackEndName());
    const std::string_view nonlinear = nonlinearBackEndName();
    if (!names.empty() && !nonlinear.empty()) names += ", ";
    return names.append(nonlinear);
}

}  // namespace engine
