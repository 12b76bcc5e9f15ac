#include "translate/error_report.hpp"

#include "host/operations.hpp"

namespace vex {

void setStatuses(const NorvLocalSolver& link, std::int32_t modelStatus, std::int32_t solveStatus) {
    nmoModelStatSet(link.nmo, modelStatus);
    nmoSolveStatSet(link.nmo, solveStatus);
}

std::int32_t reportError(const NorvLocalSolver& link, const localsolver::LSException& error) {
    nevLogStatPChar(link.nev, error.what());
    nevLogStatPChar(link.nev, "\n");
    if (error.getErrorCode() == LS_ERROR_CALLER) {
        setStatuses(link, model_status::noSolutionReturned, solve_status::capabilityProblem);
        return 0;
    }
    setStatuses(link, model_status::errorNoSolution, solve_status::setupFailure);
    return 1;
}

}  // namespace vex
