#include "solve/ampl/outcome.hpp"

#include <algorithm>

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

AmplOutcome outcomeWithPoint(const Model& model, const BoxVerdict& verdict) {
    const std::int32_t status = model.modelStatus();
    if (status == model_status::optimal) return {solved, "optimal solution", /*hasPoint=*/true};
    if (status == model_status::solvedUnique) return {solved, "solved", /*hasPoint=*/true};
    if (verdict.kind == BoxVerdict::Kind::optimal) return {solved, verdict.text, /*hasPoint=*/true};
    if (verdict.kind == BoxVerdict::Kind::unbounded)
        return {unbounded, verdict.text, /*hasPoint=*/true};
    const std::string remark = verdict.text.empty() ? "" : "; " + verdict.text;
    if (const Limit* limit = reachedLimit(model)) {
        return {limitWithPoint + limit->offset,
                std::string("feasible solution, ") + limit->text + remark, /*hasPoint=*/true};
    }
    return {unproved, "feasible solution, not proved optimal" + remark, /*hasPoint=*/true};
}

AmplOutcome outcomeWithoutPoint(const Model& model, const BoxVerdict& verdict) {
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
    if (verdict.kind == BoxVerdict::Kind::infeasible) return {infeasible + 1, verdict.text};
    if (status == model_status::locallyInfeasible)
        return {infeasible + 1, "no feasible solution found"};
    return {wrongPoint, "the point found violates a row of the model"};
}

}  // namespace

AmplOutcome outcomeOf(const Model& model, const SolveResult& result) {
    const std::optional<PointCheck>& check = result.check;
    if (!check) return outcomeWithoutPoint(model, result.verdict);
    if (check->passed) return outcomeWithPoint(model, result.verdict);
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
