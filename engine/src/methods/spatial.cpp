#include "methods/spatial.hpp"

#include <optional>

#include "evaluate/judge.hpp"
#include "global/factorable_model.hpp"
#include "global/local_improvement.hpp"
#include "global/spatial_tree.hpp"

namespace engine {
namespace {

class Spatial final : public Method {
public:
    using Method::Method;

    [[nodiscard]] std::string_view name() const override { return "spatial branch and bound"; }
    [[nodiscard]] std::string reasonAgainst() override;
    [[nodiscard]] double weight() const override { return 6.0; }
    void run(Pace& pace) override;

private:
    std::optional<FactorableModel> factorable_;
};

std::string Spatial::reasonAgainst() {
    if (model().objective.size() > 1) return "there are several objectives";
    std::vector<Value> values;
    judge(model(), ground().start, values);
    factorable_ = factorableModelOf(model(), ground().propagator, values);
    if (!factorable_) return "the model is too large for a relaxation of its parts";
    if (factorable_->definition.empty() && factorable_->cone.empty() && factorable_->isComplete)
        return "the model is linear";
    return "";
}

void Spatial::run(Pace& pace) {
    Propagator propagator = ground().propagator;
    std::vector<Interval> domain = model().domain;
    for (DecisionIndex d = 0; d < model().nbDecisions(); ++d) {
        domain[static_cast<std::size_t>(d)] = propagator.domainOf(d);
    }
    CleanPoints points(model(), std::move(domain), name());
    LocalImprovement improvement(model(), points);
    SpatialSettings settings{.pace = pace};
    settings.exchange = [&] {
        points.lookAt(findings().incumbent);
        findings().incumbent.takeFrom(points.best());
    };
    settings.improve = [&improvement](const Point& start, const std::vector<Interval>& box,
                                      Pace& part) { improvement.run(start, box, part); };
    settings.onBound = [this](double bound) {
        if (!model().objective.empty()) findings().tighten(model(), 0, bound);
    };
    const SpatialOutcome found =
        searchBoxes(model(), *factorable_, propagator, ground().start, points, settings);
    settings.exchange();
    const std::string proof = "branch and bound over " + std::to_string(found.nbNodes) + " boxes";
    if (found.status == SpatialOutcome::Status::Inconsistent) {
        conclude(Outcome::Inconsistent, proof);
    }
    if (found.status != SpatialOutcome::Status::Optimal) return;
    // What the proof holds for, without the grace of the tolerance.
    findings().incumbent.replace(points.best().best());
    conclude(Outcome::Optimal, proof);
}

}  // namespace

std::unique_ptr<Method> makeSpatial(Ground& ground) {
    return std::make_unique<Spatial>(ground);
}

}  // namespace engine
