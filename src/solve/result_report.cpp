#include "solve/result_report.hpp"

#include <cstdint>

#include "defvars/recomputation.hpp"
#include "diag/number_text.hpp"
#include "diag/solve_trace.hpp"
#include "host/operations.hpp"
#include "host/option_names.hpp"
#include "solve/trace_holder.hpp"

namespace vex {

namespace {

using localsolver::LSException;
using localsolver::LSExpression;
using localsolver::LSSolution;
using localsolver::LSSolutionStatus;

void reportStop(const NorvLocalSolver& link, const char* message, std::int32_t status) {
    nevLogStatPChar(link.nev, message);
    nmoSolveStatSet(link.nmo, status);
}

/// The user's wish first, then the limits: a search may meet several of them.
void reportStopReason(const NorvLocalSolver& link, int phase) {
    ls_solver* solver = link.solver->getHandle();
    if (link.interrupted) {
        reportStop(link, "\nStopped due to user interrupt (Ctrl+C event).\n",
                   solve_status::userInterrupt);
    } else if (link.solver->getNbIterations() >= ls_phase_get_iteration_limit(solver, phase)) {
        reportStop(link, "\nStopped due to iteration limit.\n", solve_status::iterationLimit);
    } else if (link.solver->getRunningTime() >= ls_phase_get_time_limit(solver, phase)) {
        reportStop(link, "\nStopped due to time limit.\n", solve_status::timeLimit);
    } else {
        reportStop(link, "\n", solve_status::normal);
    }
}

void reportStatistics(const NorvLocalSolver& link) {
    nmoSetHeadnTail(link.nmo, head_and_tail::iterations,
                    static_cast<double>(link.solver->getNbIterations()));
    nmoSetHeadnTail(link.nmo, head_and_tail::seconds,
                    static_cast<double>(link.solver->getRunningTime()));
}

/// Does the final point violate a row that became a constraint?
bool violatesRow(const NorvLocalSolver& link) {
    const LSSolution solution = link.solver->getSolution();
    for (std::size_t i = 0;
         static_cast<std::int32_t>(i) < nmoM(link.nmo) && i < link.constraints.size(); ++i) {
        const LSExpression constraint = link.constraints[i];
        if (isBuilt(constraint) && solution.getIntValue(constraint) == 0) return true;
    }
    return false;
}

void writeLevels(const NorvLocalSolver& link, bool noUsablePoint) {
    const LSSolution solution = link.solver->getSolution();
    for (std::size_t at = 0;
         static_cast<std::int32_t>(at) < nmoN(link.nmo) && at < link.variables.size(); ++at) {
        if (!isBuilt(link.variables[at])) continue;
        try {
            nmoSetVarLOne(link.nmo, static_cast<std::int32_t>(at),
                          solution.getValue(link.variables[at]));
        } catch (const LSException&) {
            // A point that is worth nothing anyway may have values that cannot be told.
            if (!noUsablePoint) throw;
        }
    }
}

/// May the verdict rest on a bound that the host's model does not have?
bool boundsAreImposed(const NorvLocalSolver& link) {
    return link.nbLowerClamped > 0 || link.nbUpperClamped > 0 ||
           optGetDefinedStr(link.opt, option::dualbound) != 0;
}

void reportInconsistent(const NorvLocalSolver& link) {
    if (boundsAreImposed(link)) {
        nmoModelStatSet(link.nmo, model_status::locallyInfeasible);
        nevLogStat(link.nev,
                   "Model instance proven to be infeasible w.r.t. imposed variable bounds.\n");
    } else {
        nmoModelStatSet(link.nmo, nmoNDisc(link.nmo) != 0 ? model_status::integerInfeasible
                                                          : model_status::infeasible);
        nevLogStat(link.nev, "Model instance proven to be infeasible.\n");
    }
}

void reportPoint(const NorvLocalSolver& link, bool proved, bool noUsablePoint) {
    if (noUsablePoint) {
        nmoModelStatSet(link.nmo, model_status::intermediateInfeasible);
        nevLogStat(link.nev,
                   "Solution found by LocalSolver not feasible in original problem, reporting "
                   "model status intermediate infeasible.");
    } else if (proved && !boundsAreImposed(link)) {
        nmoModelStatSet(link.nmo, model_status::optimal);
        nmoSolveStatSet(link.nmo, solve_status::normal);
        nevLogStatPChar(link.nev, "Optimal solution found.\n");
    } else {
        nmoModelStatSet(link.nmo, nmoNDisc(link.nmo) != 0 ? model_status::integerSolution
                                                          : model_status::feasible);
        nevLogStatPChar(link.nev, "Feasible solution found.\n");
    }
}

/// The host has computed the value from the levels written to it.
void reportObjective(const NorvLocalSolver& link) {
    if (nmoModelType(link.nmo) == model_type::squareSystem) return;
    const std::string value =
        scientificText(nmoGetHeadnTail(link.nmo, head_and_tail::objective), /*digits=*/8,
                       /*width=*/15);
    const char* label = link.nbObjectives > 1 ? "Objective Value (NORV model objective function): "
                                              : "Objective Value: ";
    nevLogStatPChar(link.nev, (label + value + "\n").c_str());
}

void reportVerdict(const NorvLocalSolver& link, LSSolutionStatus status, bool noUsablePoint) {
    switch (status) {
        case LS_STATUS_INCONSISTENT:
            reportInconsistent(link);
            break;
        case LS_STATUS_INFEASIBLE:
            nmoModelStatSet(link.nmo, model_status::locallyInfeasible);
            nevLogStat(link.nev, "No feasible solution found.\n");
            break;
        case LS_STATUS_FEASIBLE:
        case LS_STATUS_OPTIMAL:
            reportPoint(link, /*proved=*/status == LS_STATUS_OPTIMAL, noUsablePoint);
            reportObjective(link);
            break;
        default:
            break;  // a status of a later optimizer: the host's own stands
    }
}

void finishTrace(const NorvLocalSolver& link, bool noUsablePoint) {
    if (link.trace == nullptr) return;
    const double bestBound = -worstValue(link);
    const double bestFound =
        noUsablePoint ? worstValue(link) : nmoGetHeadnTail(link.nmo, head_and_tail::objective);
    link.trace->finish(/*node=*/0, bestBound, bestFound);
}

}  // namespace

void reportResult(NorvLocalSolver& link, int phase) {
    reportStopReason(link, phase);
    reportStatistics(link);
    bool noUsablePoint = violatesRow(link);
    writeLevels(link, noUsablePoint);
    if (!evaluateDefinedVariables(link.nmo, link.definedVariables))
        nevLogPChar(link.nev, "Issues evaluating aggregated variables.\n");
    nmoSetHeadnTail(link.nmo, head_and_tail::marginals, 0.0);
    nmoCompleteSolution(link.nmo);
    const LSSolutionStatus status = link.solver->getSolution().getStatus();
    reportVerdict(link, status, noUsablePoint);
    if (status == LS_STATUS_INCONSISTENT || status == LS_STATUS_INFEASIBLE) noUsablePoint = true;
    finishTrace(link, noUsablePoint);
}

void reportSquareSystem(ModelHandle nmo) {
    if (nmoModelType(nmo) != model_type::squareSystem) return;
    switch (nmoModelStat(nmo)) {
        case model_status::optimal:
        case model_status::locallyOptimal:
        case model_status::feasible:
        case model_status::integerSolution:
            nmoModelStatSet(nmo, model_status::solvedUnique);
            break;
        default:
            break;
    }
}

}  // namespace vex
