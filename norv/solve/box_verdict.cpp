#include "solve/box_verdict.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

#include "hostapi/codes.hpp"

namespace norv {
namespace {

namespace model_status = hostapi::model_status;
using hostapi::imposedBound;
using Kind = BoxVerdict::Kind;

/// Optimizers stay this far away from a bound at which they are, relative to it.
constexpr double nearness = 1e-6;

bool hasImposedBound(const Model& model) {
    for (std::int32_t j = 0; j < model.nbVariables(); ++j) {
        const bool isInfinite = std::isinf(model.lower(j)) || std::isinf(model.upper(j));
        if (isInfinite && model.isUsed(j)) return true;
    }
    return false;
}

/// Is there no bound on the side where the level is? Then the link has imposed one.
bool isOpen(const Model& model, std::int32_t j, double level) {
    return std::isinf(level < 0.0 ? model.lower(j) : model.upper(j)) && model.isUsed(j);
}

std::vector<std::int32_t> variablesAtBound(const Model& model) {
    std::vector<std::int32_t> variables;
    for (std::int32_t j = 0; j < model.nbVariables(); ++j) {
        const double level = model.levels()[static_cast<std::size_t>(j)];
        const double distance = std::fabs(std::fabs(level) - imposedBound);
        if (distance <= nearness * imposedBound && isOpen(model, j, level)) variables.push_back(j);
    }
    return variables;
}

/// "x", "x and y", "x, y, z and 5 more"
std::string namesOf(const Model& model, const std::vector<std::int32_t>& variables) {
    constexpr std::size_t mostNames = 3;
    const std::size_t nbNames = std::min(mostNames, variables.size());
    const std::size_t nbMore = variables.size() - nbNames;
    std::string names = model.variableName(variables[0]);
    for (std::size_t k = 1; k < nbNames; ++k) {
        const bool isLast = k + 1 == nbNames && nbMore == 0;
        names += (isLast ? " and " : ", ") + model.variableName(variables[k]);
    }
    if (nbMore > 0) names += " and " + std::to_string(nbMore) + " more";
    return names;
}

std::string standing(const Model& model, const std::vector<std::int32_t>& atBound) {
    return namesOf(model, atBound) + (atBound.size() == 1 ? " is" : " are") +
           " at a bound of 1e10 that the link had to impose";
}

/// Half the way back from the border: everything far away moves along the ray on which it came.
std::vector<double> nearerPoint(const Model& model) {
    constexpr double farAway = imposedBound / 10.0;
    // What is less does not belong to the ray: x = y - 3 at 1e10 came along (1, 1).
    constexpr double resolution = 1e-6;
    std::vector<double> point(model.levels().begin(), model.levels().end());
    for (std::int32_t j = 0; j < model.nbVariables(); ++j) {
        double& level = point[static_cast<std::size_t>(j)];
        if (std::fabs(level) < farAway || !isOpen(model, j, level)) continue;
        level -=
            std::round(level / (imposedBound * resolution)) * (imposedBound * resolution / 2.0);
    }
    return point;
}

/// May the point have come to the border without reason, being no better there?
bool isAsGoodInside(const Model& model) {
    const std::vector<double> nearer = nearerPoint(model);
    const Evaluation here = model.evaluateObjective(model.levels());
    const Evaluation there = model.evaluateObjective(nearer);
    if (here.nbErrors + there.nbErrors > 0 || !isFeasible(model, nearer)) return false;
    const bool minimises = model.sense() == hostapi::objective_sense::minimise;
    return minimises ? there.value <= here.value : there.value >= here.value;
}

BoxVerdict provedVerdict(const Model& model, const std::vector<std::int32_t>& atBound) {
    if (!model.hasObjective()) return {Kind::optimal, "optimal; there is no objective"};
    if (atBound.empty() && model.isSurelyConvex()) {
        return {Kind::optimal,
                "optimal; no variable is at a bound of 1e10 that the link had to impose"};
    }
    if (atBound.empty()) return {Kind::optimal, "optimal among points within ±1e10"};
    if (isAsGoodInside(model)) {
        return {Kind::optimal, "optimal among points within ±1e10; " + standing(model, atBound) +
                                   ", without need"};
    }
    return {Kind::unbounded, "unbounded, or best beyond 1e10; " + standing(model, atBound)};
}

}  // namespace

BoxVerdict boxVerdict(const Model& model, const std::optional<PointCheck>& check,
                      bool hasThreshold) {
    const std::int32_t status = model.modelStatus();
    const bool endedByItself = model.solveStatus() == hostapi::solve_status::normal;
    if (!hasImposedBound(model)) return {};
    if (status == model_status::locallyInfeasible && endedByItself)
        return {Kind::infeasible, "infeasible, at least while no variable exceeds 1e10"};
    const bool isFeasiblePoint =
        status == model_status::feasible || status == model_status::integerSolution;
    if (!isFeasiblePoint || !check || !check->passed) return {};
    const std::vector<std::int32_t> atBound = variablesAtBound(model);
    if (endedByItself && !hasThreshold) return provedVerdict(model, atBound);
    if (atBound.empty()) return {};
    return {Kind::standsAtBound, standing(model, atBound)};
}

}  // namespace norv
