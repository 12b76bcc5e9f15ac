#include "solve/incumbent.hpp"

#include "defvars/recomputation.hpp"
#include "host/operations.hpp"

namespace vex {

bool readIncumbent(const NorvLocalSolver& link, std::span<double> levels) {
    if (link.solver == nullptr || levels.size() != link.variables.size()) return false;
    const localsolver::LSSolution solution = link.solver->getSolution();
    if (solution.getStatus() < LS_STATUS_FEASIBLE) return false;
    nmoGetVarL(link.nmo, levels.data());
    for (std::size_t at = 0; at < levels.size(); ++at) {
        if (isBuilt(link.variables[at])) levels[at] = solution.getValue(link.variables[at]);
    }
    return computeDefinedVariables(link.nmo, link.definedVariables, levels);
}

}  // namespace vex
