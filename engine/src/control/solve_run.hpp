#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "control/parameters.hpp"
#include "control/schedule.hpp"
#include "control/search_team.hpp"
#include "control/solution.hpp"
#include "control/statistics.hpp"
#include "control/stop_signal.hpp"
#include "control/worker_team.hpp"

namespace engine {

/// What a solve works on; owned by the solver, which outlives the run.
struct RunContext {
    std::shared_ptr<const ClosedModel> model;
    const Propagator* root;  ///< propagated without conflict, or null
    const Parameters& parameters;
    const std::vector<Phase>& phases;
    Solution& solution;
    Statistics& statistics;
    std::vector<MethodChoice>& methodChoices;
    StopSignal& stopSignal;
    /// Runs the callbacks of a type on this thread; throws nothing.
    std::function<void(ls_callback_type)> emit;
};

/// One call of ls_solve: proves and searches by turns, through the phases in order.
///
/// The schedule says whose turns come next, one on each worker; a round of them takes some
/// milliseconds, measured in work. Between rounds points and bounds are exchanged. The clock
/// decides nothing but the end. The solve thread itself only waits, ticks and keeps the best point;
/// the work is done by the workers. An exception of a worker leaves run() after all workers have
/// come to rest.
class SolveRun {
public:
    explicit SolveRun(RunContext context);
    /// Halts the workers.
    ~SolveRun();
    SolveRun(const SolveRun&) = delete;
    SolveRun& operator=(const SolveRun&) = delete;

    void run();

private:
    using Clock = WorkerTeam::Clock;

    void runPhase(const Phase& phase);
    [[nodiscard]] bool isFinished();
    /// Do the objectives' bounds prove the current point, which is feasible, optimal?
    [[nodiscard]] bool cannotImprove() const;
    [[nodiscard]] bool isThresholdReached();
    [[nodiscard]] bool isLimitReached(const Phase& phase) const;
    [[nodiscard]] std::int64_t iterationsLeft(const Phase& phase) const;

    /// One round of turns, `iterations` at most but for larger pieces.
    void runRound(std::int64_t iterations);
    void openStage();
    void tellMethods();
    /// Takes over what a method has found out, while it is held.
    void accept(Method& method);
    void acceptAll();
    /// Searchers stay inside, those that run and those that are still to be made.
    void takeDomain(const std::vector<Interval>& tightened);
    void acceptOptimum(Incumbent claimed);
    /// Has the methods end with what they have in hand.
    void concludeMethods();
    void makeSearchers();
    /// Makes the current point rest less on the tolerance.
    void polish();

    /// Waits for the job under way, ticks meanwhile, and halts it at the deadline.
    /// @param hasTurns  it lets methods run: those that cannot be held then are left behind at the
    ///                  end of the solve.
    void awaitJob(bool hasTurns = false);
    [[nodiscard]] bool isLastPhase() const { return phase_ == &context_.phases.back(); }
    void emit(ls_callback_type type);
    /// The start of a phase is told when the methods are chosen, so that the description at the
    /// start says which apply; but not later than a moment after it.
    void emitPhaseStartIfDue(bool mustNotWait);
    void emitTimeTickIfDue();
    [[nodiscard]] Clock::duration timeBetweenTicks() const;
    void emitIterationTickIfDue();

    RunContext context_;
    const ClosedModel& model_;
    const Phase* phase_ = nullptr;  ///< under way
    Clock::time_point start_;
    Clock::time_point deadline_;  ///< of the phase under way
    Clock::time_point nextTimeTick_;
    bool isPhaseStartUntold_ = false;
    Clock::time_point phaseStartTime_;     ///< until which it may stay so
    Clock::time_point lastIterationTick_;  ///< by the clock
    int nbTimeTicks_ = 0;                  ///< since the last display
    std::int64_t phaseStartIterations_ = 0;
    std::int64_t lastTickIterations_ = 0;

    std::int64_t workToCount_ = 0;  ///< not yet a whole iteration
    std::vector<Interval> domain_;  ///< [nbDecisions] as tightened by the methods

    std::optional<SearchTeam> searchers_;
    WorkerTeam team_;    ///< its threads end before what they work on
    Schedule schedule_;  ///< last: its threads ask the team
};

}  // namespace engine
