#include "methods/propagation.hpp"

#include <algorithm>

namespace engine {
namespace {

/// Integers profit from every step, and reach an end. Ranges of reals that take more than a few
/// passes converge slowly, and the methods propagate further where they branch.
std::int64_t workLimitFor(const ClosedModel& model) {
    const auto size = static_cast<std::int64_t>(model.operand.size() + model.op.size());
    for (DecisionIndex d = 0; d < model.nbDecisions(); ++d) {
        if (model.isDiscrete(d)) return 100'000 + 8 * size;
    }
    return 20'000 + 3 * size;
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

class Propagation final : public Method {
public:
    using Method::Method;
    [[nodiscard]] std::string_view name() const override { return "interval propagation"; }
    [[nodiscard]] std::string reasonAgainst() override { return {}; }
    [[nodiscard]] double weight() const override { return infinity; }
    void run(Pace& pace) override;
};

void Propagation::run(Pace& pace) {
    Propagator& propagator = ground().propagator;
    if (someIsEmpty(model().domain)) {
        return conclude(Outcome::Inconsistent, "a decision has an empty domain");
    }
    const bool isConsistent =
        ground().isPropagated || propagator.start(model().domain, workLimitFor(model()));
    pace.spend(propagator.work());
    if (!isConsistent) return conclude(Outcome::Inconsistent, std::string(name()));
    findings().domain = domainsOf(model(), propagator);
    for (std::size_t k = 0; k < model().objective.size(); ++k) {
        const Objective& o = model().objective[k];
        const Range range = propagator.rangeOf(o.expression);
        findings().tighten(model(), k, o.maximise ? range.upper : range.lower);
    }
}

}  // namespace

std::unique_ptr<Method> makePropagation(Ground& ground) {
    return std::make_unique<Propagation>(ground);
}

std::optional<Propagator> propagatedRoot(const ClosedModel& model) {
    if (someIsEmpty(model.domain)) return std::nullopt;
    std::optional<Propagator> propagator(std::in_place, model);
    if (!propagator->start(model.domain, workLimitFor(model))) propagator.reset();
    return propagator;
}

}  // namespace engine
