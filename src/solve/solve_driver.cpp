#include "solve/solve_driver.hpp"

#include "host/operations.hpp"
#include "solve/diagnostic_files.hpp"
#include "solve/parameters.hpp"
#include "solve/progress_callback.hpp"
#include "solve/result_report.hpp"
#include "solve/trace_holder.hpp"

namespace vex {

namespace {

bool modelIsClosed(const NorvLocalSolver& link) {
    return link.solver != nullptr && link.solver->getState() == LS_STATE_CLOSED;
}

void registerCallbacks(NorvLocalSolver& link) {
    link.onSearchEvent = &handleSearchEvent;
    localsolver::LSCallback* listener = &link;
    for (const auto type : {LS_CALLBACK_PHASE_STARTED, LS_CALLBACK_TIME_TICKED,
                            LS_CALLBACK_ITERATION_TICKED, LS_CALLBACK_PHASE_ENDED})
        link.solver->addCallback(type, &callbackDispatch, listener);
}

/// @return the driver's result after `error`.
std::int32_t reportError(const NorvLocalSolver& link, const localsolver::LSException& error) {
    nevLogStatPChar(link.nev, error.what());
    nevLogStatPChar(link.nev, "\n");
    if (error.getErrorCode() == LS_ERROR_CALLER) {
        nmoModelStatSet(link.nmo, model_status::noSolutionReturned);
        nmoSolveStatSet(link.nmo, solve_status::capabilityProblem);
        return 0;
    }
    nmoModelStatSet(link.nmo, model_status::errorNoSolution);
    nmoSolveStatSet(link.nmo, solve_status::setupFailure);
    return 1;
}

}  // namespace

std::int32_t runSolveDriver(NorvLocalSolver& link) {
    std::int32_t result = 0;
    TraceHolder trace(link);  // closes the trace on every path
    try {
        if (!modelIsClosed(link)) return 0;
        link.setupStartingPoint();
        registerCallbacks(link);
        link.interrupted = false;
        if (!dumpModelOnRequest(link)) return 1;
        if (const std::int32_t failure = trace.openOnRequest(); failure != 0) return failure;
        setParameters(link);
        const int phase = addLimitedPhase(link);
        if (!saveEnvironmentOnRequest(link)) return 1;
        link.solver->solve();
        reportResult(link, phase);
    } catch (const localsolver::LSException& error) {
        result = reportError(link, error);
    }
    trace.close();
    reportSquareSystem(link.nmo);
    return result;
}

}  // namespace vex
