#include "solve/progress_callback.hpp"

#include <cstdint>

#include "diag/solve_trace.hpp"
#include "host/operations.hpp"
#include "solve/trace_holder.hpp"
#include "translate/optimizer_text.hpp"

/// What the link does at the events of a search, on the host's thread, with the search paused.

namespace vex {

namespace {

/// Ends the search when the host's user asks for it; the event is handled all the same.
void heedTerminateRequest(NorvLocalSolver& link) {
    if (nevTerminateGet(link.nev) == 0) return;
    link.interrupted = true;
    link.solver->stop();
}

void logProgress(const NorvLocalSolver& link) {
    ls_solver* solver = link.solver->getHandle();
    const std::string search = fetchText(
        [solver](char* text, int length) { return ls_solver_info(solver, text, length); });
    nevLogPChar(link.nev, search.c_str());
    nevLogPChar(link.nev, " || ");
    const std::string statistics =
        fetchText([solver](char* text, int length) { return ls_stats_info(solver, text, length); });
    nevLog(link.nev, statistics.c_str());
}

void logDescription(const NorvLocalSolver& link) {
    ls_solver* solver = link.solver->getHandle();
    nevLogPChar(link.nev, "\n");
    const std::string description = fetchText(
        [solver](char* text, int length) { return ls_solver_to_string(solver, text, length); });
    nevLogStatPChar(link.nev, description.c_str());
    nevLogStatPChar(link.nev, "\n");
}

/// The first objective's value in the best point; the worst infinity while there is none.
double bestFound(const NorvLocalSolver& link) {
    const localsolver::LSSolution solution = link.solver->getSolution();
    if (solution.getStatus() >= LS_STATUS_FEASIBLE && !link.objectives.empty())
        return solution.getValue(link.objectives.front());
    return worstValue(link);
}

void traceProgress(const NorvLocalSolver& link) {
    if (link.trace == nullptr) return;
    const double found = bestFound(link);
    link.trace->update(/*node=*/0, /*bestBound=*/-worstValue(link), found);
}

/// Ends the search with `reason`. A search that refuses to be interrupted goes on to its limits:
/// there is nobody left to tell.
void interruptSearch(ls_solver* search, const char* reason) noexcept {
    try {
        ls_interrupt(search, reason);
    } catch (...) {  // NOLINT(bugprone-empty-catch)
    }
}

}  // namespace

void handleSearchEvent(NorvLocalSolver& link, localsolver::LSCallbackType type) {
    heedTerminateRequest(link);
    if (type == LS_CALLBACK_ITERATION_TICKED) return logProgress(link);
    if (type == LS_CALLBACK_PHASE_STARTED) logDescription(link);
    traceProgress(link);
}

void callbackDispatch(ls_solver* search, int type, void* userData) noexcept {
    try {
        localsolver::LocalSolver borrowed(search, /*isOwner=*/false);
        static_cast<localsolver::LSCallback*>(userData)->callback(
            borrowed, static_cast<localsolver::LSCallbackType>(type));
    } catch (const std::exception& error) {
        interruptSearch(search, error.what());
    } catch (...) {
        interruptSearch(search, "Unknown error");
    }
}

}  // namespace vex
