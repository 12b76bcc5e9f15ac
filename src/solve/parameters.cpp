#include "solve/parameters.hpp"

#include <cstdint>

#include "host/operations.hpp"
#include "host/option_names.hpp"
#include "translate/saturate.hpp"

namespace vex {

void setParameters(const NorvLocalSolver& link) {
    const localsolver::LocalSolver& solver = *link.solver;
    solver.setNbThreads(nevThreads(link.nev));
    solver.setSeed(optGetIntStr(link.opt, option::seed));
    solver.setAnnealingLevel(optGetIntStr(link.opt, option::annealinglevel));
    solver.setIterationBetweenTicks(optGetIntStr(link.opt, option::logfreq));
    if (optGetDefinedStr(link.opt, option::dualbound) != 0) {
        solver.setObjectiveThreshold(/*position=*/0, optGetDblStr(link.opt, option::dualbound));
    }
}

int addLimitedPhase(const NorvLocalSolver& link) {
    ls_solver* solver = link.solver->getHandle();
    const int phase = link.solver->addPhase();
    ls_phase_set_time_limit(
        solver, phase, saturate<std::int32_t>(nevGetDblOpt(link.nev, host_setting::timeLimit)));
    const std::int32_t iterationLimit = nevGetIntOpt(link.nev, host_setting::iterationLimit);
    if (iterationLimit != noIterationLimit)
        ls_phase_set_iteration_limit(solver, phase, iterationLimit);
    return phase;
}

}  // namespace vex
