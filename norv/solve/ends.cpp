#include "solve/ends.hpp"

#include <algorithm>

#include "hostapi/codes.hpp"

namespace norv {
namespace {

namespace model_status = hostapi::model_status;
namespace solve_status = hostapi::solve_status;
using Kind = Ending::Kind;

struct KindRow {
    Kind kind;
    ExitCode exitCode;
    std::int32_t solutionCode;
};
/// In the order of the kinds.
constexpr KindRow kinds[] = {
    {Kind::optimal, ExitCode::solved, 0},
    {Kind::feasible, ExitCode::solved, 100},
    {Kind::infeasible, ExitCode::infeasible, 200},
    {Kind::unbounded, ExitCode::unbounded, 300},
    {Kind::noneFound, ExitCode::noneFound, 470},
    {Kind::unsupported, ExitCode::unsupported, 510},
    {Kind::failedCheck, ExitCode::failedCheck, 520},
    {Kind::failed, ExitCode::failed, 500},
};

struct ReasonRow {
    StopReason reason;
    const char* text;
    std::int32_t offset;  ///< of the .sol code, behind 400 with a point, 470 without
};
/// In the order of the reasons.
constexpr ReasonRow reasons[] = {
    {StopReason::none, "", 0},
    {StopReason::user, "interrupted", 1},
    {StopReason::timeLimit, "time limit", 2},
    {StopReason::iterationLimit, "iteration limit", 3},
    {StopReason::wallLimit, "time limit", 2},
    {StopReason::noImprovement, "no improvement for long", 3},
};

const KindRow& rowOf(Kind kind) {
    return kinds[static_cast<std::size_t>(kind)];
}
const ReasonRow& rowOf(StopReason reason) {
    return reasons[static_cast<std::size_t>(reason)];
}

StopReason reasonOf(const Model& model, StopReason asked) {
    switch (model.solveStatus()) {
        case solve_status::iterationLimit:
            return StopReason::iterationLimit;
        case solve_status::timeLimit:
            return StopReason::timeLimit;
        case solve_status::userInterrupt:
            return asked == StopReason::none ? StopReason::user : asked;
        default:
            return StopReason::none;
    }
}

/// "time limit, feasible solution": clients look for these words.
std::string limited(StopReason reason, const std::string& text) {
    return reason == StopReason::none ? text : reasonText(reason) + ", " + text;
}

Ending withPoint(const Model& model, const SolveResult& result, StopReason reason) {
    const BoxVerdict& verdict = result.verdict;
    const std::int32_t status = model.modelStatus();
    if (!result.check->passed)
        return {Kind::failedCheck, reason,
                "the point found fails the check of " + result.check->worst};
    if (status == model_status::solvedUnique) return {Kind::optimal, reason, "solved"};
    if (status == model_status::optimal) return {Kind::optimal, reason, "optimal solution"};
    if (verdict.kind == BoxVerdict::Kind::optimal) return {Kind::optimal, reason, verdict.text};
    if (verdict.kind == BoxVerdict::Kind::unbounded) return {Kind::unbounded, reason, verdict.text};
    const std::string remark = verdict.text.empty() ? "" : "; " + verdict.text;
    const char* const words =
        reason == StopReason::none ? "feasible solution, not proved optimal" : "feasible solution";
    return {Kind::feasible, reason, limited(reason, words) + remark};
}

/// ": sosno 1, sosno 2", or nothing.
std::string setsOf(const Model& model) {
    constexpr std::size_t mostNames = 3;
    const auto sets = model.specialOrderedSets();
    std::string names;
    for (std::size_t k = 0; k < std::min(sets.size(), mostNames); ++k)
        names += (k == 0 ? ": " : ", ") + sets[k].name;
    return names + (sets.size() > mostNames ? " and others" : "");
}

Ending withoutPoint(const Model& model, const SolveResult& result, StopReason reason,
                    const std::string& refusal) {
    switch (model.modelStatus()) {
        case model_status::infeasible:
        case model_status::integerInfeasible:
            return {Kind::infeasible, reason, "infeasible"};
        case model_status::locallyInfeasible:
            if (result.verdict.kind == BoxVerdict::Kind::infeasible)
                return {Kind::infeasible, reason, result.verdict.text};
            return {Kind::noneFound, reason, limited(reason, "no feasible solution found")};
        case model_status::intermediateInfeasible:
            return {Kind::noneFound, reason,
                    limited(reason, "the point found violates a row of the model")};
        case model_status::noSolutionReturned:
            return {Kind::unsupported, reason,
                    "the model uses something that is not supported" +
                        (refusal.empty() ? "" : ": " + refusal) + setsOf(model)};
        default:
            return {Kind::failed, reason, "the solve failed"};
    }
}

}  // namespace

ExitCode Ending::exitCode() const {
    return kind == Kind::failed ? complaint : rowOf(kind).exitCode;
}

std::int32_t Ending::solutionCode() const {
    const std::int32_t code = rowOf(kind).solutionCode;
    if (kind == Kind::feasible && reason != StopReason::none) return 400 + rowOf(reason).offset;
    if (kind == Kind::noneFound) return code + rowOf(reason).offset;
    if (kind == Kind::failed) return code + static_cast<std::int32_t>(complaint);
    return code;
}

std::string reasonText(StopReason reason) {
    return rowOf(reason).text;
}

Ending endingOf(const Model& model, const SolveResult& result, StopReason asked,
                const std::string& refusal) {
    const StopReason reason = reasonOf(model, asked);
    return result.check ? withPoint(model, result, reason)
                        : withoutPoint(model, result, reason, refusal);
}

}  // namespace norv
