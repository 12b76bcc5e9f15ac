#include "back_ends/solve_locally.hpp"

#include "back_ends/nonlinear_back_end.hpp"
#include "nonlinear/interior_point.hpp"

namespace engine {

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
    return nonlinearBackEndName().empty() ? solveByInteriorPoint(local, settings)
                                          : solveByBackEnd(local, settings);
}

}  // namespace engine
