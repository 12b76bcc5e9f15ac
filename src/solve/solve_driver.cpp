#include "solve/solve_driver.hpp"

#include "solve/diagnostic_files.hpp"
#include "solve/parameters.hpp"
#include "solve/progress_callback.hpp"
#include "solve/result_report.hpp"
#include "solve/trace_holder.hpp"
#include "translate/error_report.hpp"

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
