#include "methods/trivial_closing.hpp"

#include <algorithm>
#include <cmath>

#include "methods/enumeration.hpp"
#include "model/domain.hpp"
#include "model/tolerances.hpp"

namespace engine {
namespace {

/// `bound` moved into `i` by what propagation allows beyond the judge's tolerance: no farther than
/// to the middle.
double inside(const Interval& i, double bound) {
    const double step = std::min(0.5 * (i.upper - i.lower),
                                 10.0 * relationTolerance * std::max(1.0, std::fabs(bound)));
    return bound == i.lower ? bound + step : bound - step;
}

/// `start` with every decision moved to the nearest value of its domain; near its bounds, reals
/// whose bounds come from constraints.
Point movedInto(const ClosedModel& model, const Propagator& propagator, Point start) {
    for (DecisionIndex d = 0; d < model.nbDecisions(); ++d) {
        const Interval i = propagator.domainOf(d);
        const bool isReal = !model.isDiscrete(d);
        Value& value = start[static_cast<std::size_t>(d)];
        const double v = value.asDouble();
        if (v < i.lower) value = valueFor(model, d, isReal ? inside(i, i.lower) : i.lower);
        if (v > i.upper) value = valueFor(model, d, isReal ? inside(i, i.upper) : i.upper);
    }
    return start;
}

class TrivialClosing final : public Method {
public:
    using Method::Method;
    [[nodiscard]] std::string_view name() const override { return "starting point"; }
    [[nodiscard]] std::string reasonAgainst() override { return {}; }
    [[nodiscard]] double weight() const override { return infinity; }
    void run(Pace& pace) override;

private:
    [[nodiscard]] bool isSinglePoint() const;
};

bool TrivialClosing::isSinglePoint() const {
    for (DecisionIndex d = 0; d < model().nbDecisions(); ++d) {
        const Interval i = ground().propagator.domainOf(d);
        if (i.lower != i.upper) return false;
    }
    return true;
}

void TrivialClosing::run(Pace& pace) {
    offer(ground().start);
    ground().start = movedInto(model(), ground().propagator, std::move(ground().start));
    offer(ground().start);
    pace.spend(2 * static_cast<std::int64_t>(model().operand.size()));
    if (cannotImprove(model(), ground().propagator, findings().incumbent)) {
        return conclude(Outcome::Optimal, model().objective.empty()
                                              ? "no objective, and a feasible point"
                                              : "interval propagation");
    }
    if (!isSinglePoint()) return;
    conclude(findings().incumbent.hasPoint() ? Outcome::Optimal : Outcome::Inconsistent,
             "interval propagation leaves a single point");
}

}  // namespace

std::unique_ptr<Method> makeTrivialClosing(Ground& ground) {
    return std::make_unique<TrivialClosing>(ground);
}

}  // namespace engine
