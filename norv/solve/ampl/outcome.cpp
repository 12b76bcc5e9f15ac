#include "solve/ampl/outcome.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

#include "hostapi/codes.hpp"

namespace norv {
namespace {

namespace model_status = hostapi::model_status;
namespace solve_status = hostapi::solve_status;

// First codes of the ranges. A limit with a feasible point, and without.
constexpr std::int32_t solved = 0;
constexpr std::int32_t unproved = 100;
constexpr std::int32_t infeasible = 200;
constexpr std::int32_t unbounded = 300;
constexpr std::int32_t limitWithPoint = 400;
constexpr std::int32_t limitWithoutPoint = 450;
constexpr std::int32_t failure = 500;
constexpr std::int32_t notSupported = 510;
constexpr std::int32_t wrongPoint = 520;

struct Limit {
    std::int32_t solveStatus;
    std::int32_t offset;  ///< within the ranges for limits
    const char* text;
};
constexpr Limit limits[] = {
    {solve_status::iterationLimit, 0, "stopped at the iteration limit"},
    {solve_status::timeLimit, 1, "stopped at the time limit"},
    {solve_status::userInterrupt, 2, "stopped by the user"},
};

const Limit* reachedLimit(const Model& model) {
    const auto* const found =
        std::find_if(std::begin(limits), std::end(limits),
                     [&](const Limit& limit) { return limit.solveStatus == model.solveStatus(); });
    return found == std::end(limits) ? nullptr : found;
}

/// Does a variable without a bound stand where the link put one in its place, and does the
/// objective gain from that? Then nothing but that bound stopped the search.
bool leansOnImposedBound(const Model& model) {
    using hostapi::imposedBound;
    constexpr double farAway = imposedBound / 10.0;  // what others at that bound drag along
    bool standsThere = false;
    std::vector<double> nearer(model.levels().begin(), model.levels().end());
    for (std::int32_t j = 0; j < model.nbVariables(); ++j) {
        double& level = nearer[static_cast<std::size_t>(j)];
        const double bound = level < 0.0 ? model.lower(j) : model.upper(j);
        standsThere = standsThere || (std::isinf(bound) && std::fabs(level) >= imposedBound);
        if (std::isinf(bound) && std::fabs(level) >= farAway) level /= 2.0;
    }
    if (!standsThere) return false;
    const Evaluation here = model.evaluateObjective(model.levels());
    const Evaluation there = model.evaluateObjective(nearer);
    if (here.nbErrors + there.nbErrors > 0) return false;
    const bool minimises = model.sense() == hostapi::objective_sense::minimise;
    return minimises ? here.value < there.value : here.value > there.value;
}

AmplOutcome outcomeWithPoint(const Model& model) {
    const std::int32_t status = model.modelStatus();
    if (status == model_status::optimal) return {solved, "optimal solution", /*hasPoint=*/true};
    if (status == model_status::solvedUnique) return {solved, "solved", /*hasPoint=*/true};
    if (const Limit* limit = reachedLimit(model)) {
        return {limitWithPoint + limit->offset, std::string("feasible solution, ") + limit->text,
                true};
    }
    if (leansOnImposedBound(model)) {
        return {unbounded, "unbounded, or best where a variable without bound exceeds 1e10",
                /*hasPoint=*/true};
    }
    return {unproved, "feasible solution, not proved optimal", /*hasPoint=*/true};
}

AmplOutcome outcomeWithoutPoint(const Model& model) {
    const std::int32_t status = model.modelStatus();
    if (status == model_status::infeasible || status == model_status::integerInfeasible)
        return {infeasible, "infeasible"};
    const bool ended =
        status == model_status::locallyInfeasible || status == model_status::intermediateInfeasible;
    if (!ended) {
        AmplOutcome outcome = {failure, "the solve failed"};
        if (status == model_status::noSolutionReturned)
            outcome = {notSupported, "the model uses something that is not supported"};
        outcome.isExplainedByLog = true;
        return outcome;
    }
    if (const Limit* limit = reachedLimit(model)) {
        return {limitWithoutPoint + limit->offset,
                std::string("no feasible solution found, ") + limit->text};
    }
    if (status == model_status::locallyInfeasible)
        return {infeasible + 1, "infeasible, at least while no variable exceeds 1e10"};
    return {wrongPoint, "the point found violates a row of the model"};
}

}  // namespace

AmplOutcome outcomeOf(const Model& model, const std::optional<PointCheck>& check) {
    if (!check) return outcomeWithoutPoint(model);
    if (check->passed) return outcomeWithPoint(model);
    return {failure + static_cast<std::int32_t>(ExitCode::failedCheck),
            "the point found fails the check of " + check->worst, /*hasPoint=*/true};
}

AmplOutcome outcomeOf(const Complaint& complaint) {
    AmplOutcome outcome = {failure + static_cast<std::int32_t>(complaint.code), complaint.reason};
    outcome.hasStatistics = false;
    outcome.isExplainedByLog = complaint.code == ExitCode::linkFailed;
    return outcome;
}

}  // namespace norv
