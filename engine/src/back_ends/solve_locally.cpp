#include "back_ends/solve_locally.hpp"

#include "back_ends/nonlinear_back_end.hpp"
#include "nonlinear/interior_point.hpp"

namespace engine {
namespace {

/// Entries of the derivatives from which on a problem is large.
constexpr std::size_t largeProblem = 20'000;

bool isLarge(const LocalProblem& problem) {
    return problem.jacobianRow().size() + problem.hessianRow().size() >= largeProblem;
}

bool hasPoint(const NonlinearAnswer& answer) {
    return answer.status == NonlinearAnswer::Status::Optimal ||
           answer.status == NonlinearAnswer::Status::Feasible;
}

}  // namespace

NonlinearAnswer solveLocally(const NonlinearProblem& problem, const NonlinearSettings& settings) {
    LocalProblem local(problem);
    if (local.isInfeasible()) return {.status = NonlinearAnswer::Status::Infeasible};
    if (local.nbColumns() == 0) {
        const std::vector<double> nothing;
        local.moveTo(nothing);
        const double violation = local.violation();
        return {.status = NonlinearAnswer::Status::Optimal,
                .levels = local.levels(nothing),
                .multipliers = local.multipliers(nothing),
                .violation = violation};
    }
    if (nonlinearBackEndName().empty()) return solveByInteriorPoint(local, settings);
    if (isLarge(local) || settings.isBarrierAdaptive) return solveByBackEnd(local, settings);
    NonlinearAnswer own = solveByInteriorPoint(local, settings);
    if (hasPoint(own) || settings.pace.mustEnd()) return own;
    LocalProblem again(problem);
    NonlinearAnswer other = solveByBackEnd(again, settings);
    return hasPoint(other) || own.levels.empty() ? other : own;
}

}  // namespace engine
