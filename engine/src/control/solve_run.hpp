#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "control/paced_thread.hpp"
#include "control/parameters.hpp"
#include "control/search_team.hpp"
#include "control/solution.hpp"
#include "control/statistics.hpp"
#include "control/stop_signal.hpp"
#include "control/worker_team.hpp"
#include "prove/prepare.hpp"

namespace engine {

/// What a solve works on; owned by the solver, which outlives the run.
struct RunContext {
    const ClosedModel& model;
    const Parameters& parameters;
    const std::vector<Phase>& phases;
    Solution& solution;
    Statistics& statistics;
    StopSignal& stopSignal;
    /// Runs the callbacks of a type on this thread; throws nothing.
    std::function<void(ls_callback_type)> emit;
};

/// One call of ls_solve: proves and searches by turns, through the phases in order.
///
/// There is one proof, which goes on in each turn from where it was held. The turns are measured in
/// iterations, and what kind of proof it is decides the shares; the clock decides nothing but the
/// end. The solve thread itself only waits, ticks and keeps the best point; the work is done by the
/// workers. An exception of a worker leaves run() after all workers have come to rest.
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

    void prove(std::int64_t iterationsLeft);
    void startProof();
    void planNextTurn();
    /// Takes over what the proof has found out, while it is held.
    void acceptProof();
    /// Has the proof end with what it has in hand.
    void concludeProof();
    /// Makes the current point rest less on the tolerance.
    void polish();
    void acceptOptimum(Incumbent claimed);
    void search(std::int64_t iterationsLeft);
    void makeSearchers();

    /// Waits for the job under way, ticks meanwhile, and halts it at the deadline.
    void awaitJob();
    void emit(ls_callback_type type);
    void emitTimeTickIfDue();
    [[nodiscard]] Clock::duration timeBetweenTicks() const;
    void emitIterationTickIfDue();

    RunContext context_;
    Clock::time_point start_;
    Clock::time_point deadline_;  ///< of the phase under way
    Clock::time_point nextTimeTick_;
    int nbTimeTicks_ = 0;  ///< since the last display
    std::int64_t phaseStartIterations_ = 0;
    std::int64_t lastTickIterations_ = 0;

    std::int64_t effort_;              ///< of the next turn of proving, in operand visits
    bool isProvingExhausted_ = false;  ///< more effort would prove no more
    std::int64_t searchLeft_ = 0;      ///< moves before the next turn of proving
    std::vector<Interval> domain_;     ///< [nbDecisions] as tightened by proving

    std::optional<SearchTeam> searchers_;
    WorkerTeam team_;  ///< its threads end before what they work on
    std::optional<Proof> proof_;
    std::optional<PacedThread> proofThread_;  ///< last: works on the proof, asks the team
};

}  // namespace engine
