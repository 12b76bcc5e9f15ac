#include "prove/prepare.hpp"

namespace engine {

bool propagateDomains(const ClosedModel& model, std::vector<Interval>& domain) {
    for (ExpressionIndex e = 0; e < model.nbExpressions(); ++e) {
        const DecisionIndex d = model.decisionOf[static_cast<std::size_t>(e)];
        if (d >= 0 && domain[static_cast<std::size_t>(d)].isEmpty()) return false;
    }
    return true;
}

Preparation prepare(const ClosedModel& model, const Point& /*start*/,
                    const ProveLimits& /*limits*/) {
    Preparation result;
    result.domain = model.domain;
    if (!propagateDomains(model, result.domain)) {
        result.outcome = Preparation::Outcome::Inconsistent;
        result.proof = "a decision has an empty domain";
    }
    return result;
}

std::string backEndNames() { return {}; }

}  // namespace engine
