#include "control/solve_run.hpp"

#include <algorithm>
#include <cmath>
#include <thread>

#include "search/polish.hpp"

namespace engine {

namespace {

/// How long a tick waits for the workers to pause. They share nothing with the callbacks, so a
/// worker that is deep in a step of a back end may run on behind one.
constexpr auto pausePatience = std::chrono::milliseconds(100);

/// Time ticks come more often than promised: who asks to stop does not wait a whole period, and who
/// writes something once a period is never late by one.
constexpr int ticksPerPeriod = 4;

/// Effort is reckoned in operand visits, about 10 ns each. The first turns are short, so that both
/// sides soon know what the other finds easily.
constexpr std::int64_t firstEffort = 5'000'000;
constexpr std::int64_t effortGrowth = 4;
constexpr std::int64_t largestEffort = 80'000'000;
/// A tree is most likely to finish the model: the search gets one part in ten of the work beside.
constexpr std::int64_t treeTurnsPerSearchTurn = 9;
/// What a move of the search is reckoned at.
constexpr std::int64_t visitsPerMove = 2000;

/// An objective this near its bound is as good as it gets: absolute, relative above 1. Bounds are
/// rounded outward, so that a constant objective is not always equal to its own.
constexpr double optimalityTolerance = 1e-9;

/// What a node or pivot of proving is reckoned at: a sparse step sees a part of the model.
std::int64_t visitsPerProofStep(const ClosedModel& model) {
    return 250 + static_cast<std::int64_t>(model.operand.size()) / 10;
}

int nbThreadsOf(const Parameters& parameters) {
    if (parameters.nbThreads > 0) return parameters.nbThreads;
    return static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
}

/// Does `a` beat `b` by more than the tolerance of relations explains?
bool isClearlyBetter(const ClosedModel& model, const Verdict& a, const Verdict& b) {
    if (!a.feasible) return false;
    for (std::size_t k = 0; k < model.objective.size(); ++k) {
        const double x = a.objectives[k].asDouble();
        const double y = b.objectives[k].asDouble();
        const double gain = model.objective[k].maximise ? x - y : y - x;
        const double tolerance = relationTolerance * std::max({1.0, std::abs(x), std::abs(y)});
        if (gain > tolerance) return true;
        if (gain < -tolerance) return false;
    }
    return false;
}

}  // namespace

SolveRun::SolveRun(RunContext context)
    : context_(std::move(context)),
      start_(Clock::now()),
      deadline_(start_),
      nextTimeTick_(start_),
      effort_(firstEffort),
      domain_(context_.model.domain),
      team_(nbThreadsOf(context_.parameters)) {}

SolveRun::~SolveRun() {
    context_.stopSignal.halt();
}

void SolveRun::run() {
    context_.solution.confirm();
    nextTimeTick_ = start_ + timeBetweenTicks();
    for (const Phase& phase : context_.phases) {
        runPhase(phase);
        if (context_.stopSignal.isStopped() || isFinished()) break;
    }
    context_.statistics.elapsed = Clock::now() - start_;
}

void SolveRun::runPhase(const Phase& phase) {
    const auto phaseStart = Clock::now();
    deadline_ = phaseStart + std::chrono::seconds(phase.timeLimit);
    phaseStartIterations_ = context_.statistics.iterations;
    emit(LS_CALLBACK_PHASE_STARTED);
    while (!context_.stopSignal.isStopped() && !isFinished() && !isLimitReached(phase)) {
        context_.stopSignal.letWork();
        if (searchLeft_ == 0 && !isProvingExhausted_) {
            prove(iterationsLeft(phase));
        } else {
            search(iterationsLeft(phase));
        }
        emitTimeTickIfDue();
        emitIterationTickIfDue();
    }
    const bool isLast = &phase == &context_.phases.back();
    if (isLast || context_.stopSignal.isStopped()) concludeProof();
    if (context_.statistics.iterations > phaseStartIterations_) polish();
    emit(LS_CALLBACK_PHASE_ENDED);
}

void SolveRun::polish() {
    Solution& solution = context_.solution;
    if (!solution.verdict().feasible) return;
    const bool wasReached = isThresholdReached();
    const bool wasProved = solution.isProved();
    std::optional<Point> point = polished(context_.model, domain_, solution.point(), wasProved);
    if (!point) return;
    Incumbent before = solution.claimed();
    std::vector<Value> values;
    Incumbent after{*std::move(point), {}, 0.0};
    after.verdict = judge(context_.model, after.point, values);
    solution.replace(std::move(after));
    // A threshold that was reached only by the grace of the tolerance was reached all the same.
    if (wasReached && !isThresholdReached()) solution.replace(std::move(before));
    if (wasProved) solution.proveOptimal();
}

bool SolveRun::isFinished() {
    Solution& solution = context_.solution;
    const bool isFeasible = solution.claimed().verdict.feasible && solution.verdict().feasible;
    if (isFeasible && !solution.isProved() && cannotImprove()) solution.proveOptimal();
    return solution.isProved() || isThresholdReached();
}

bool SolveRun::cannotImprove() const {
    const std::vector<Objective>& objectives = context_.model.objective;
    const std::vector<double> bound = proof_ ? proof_->objectiveBound() : std::vector<double>();
    if (bound.size() != objectives.size()) return false;
    for (std::size_t k = 0; k < objectives.size(); ++k) {
        const double value = context_.solution.verdict().objectives[k].asDouble();
        const double tolerance = optimalityTolerance * std::max(1.0, std::abs(value));
        if (!(std::abs(bound[k] - value) <= tolerance)) return false;
    }
    return true;
}

bool SolveRun::isThresholdReached() {
    const auto& thresholds = context_.parameters.thresholds;
    const auto isReached = [&](const Verdict& verdict) {
        if (!verdict.feasible) return false;
        bool isAnySet = false;
        for (std::size_t k = 0; k < thresholds.size(); ++k) {
            if (!thresholds[k]) continue;
            isAnySet = true;
            const double value = verdict.objectives[k].asDouble();
            const bool isGood = context_.model.objective[k].maximise ? value >= *thresholds[k]
                                                                     : value <= *thresholds[k];
            if (!isGood) return false;
        }
        return isAnySet;
    };
    return isReached(context_.solution.claimed().verdict) && isReached(context_.solution.verdict());
}

std::int64_t SolveRun::iterationsLeft(const Phase& phase) const {
    return phase.iterationLimit - (context_.statistics.iterations - phaseStartIterations_);
}

bool SolveRun::isLimitReached(const Phase& phase) const {
    return Clock::now() >= deadline_ || iterationsLeft(phase) <= 0;
}

void SolveRun::startProof() {
    proof_.emplace(context_.model, context_.solution.point(), context_.parameters.seed);
    const std::atomic<bool>& halt = context_.stopSignal.workersHalt();
    proofThread_.emplace([this](Pace& pace) { proof_->run(pace); },
                         [this, &halt] {
                             team_.parkIfPaused();
                             return halt.load();
                         });
}

void SolveRun::prove(std::int64_t iterationsLeft) {
    if (!proof_) startProof();
    if (context_.solution.claimed().verdict.feasible) proof_->offer(context_.solution.point());
    const std::int64_t wanted =
        std::max<std::int64_t>(100, effort_ / visitsPerProofStep(context_.model));
    std::int64_t spent = 0;
    team_.start(1, [&](int) { spent = proofThread_->advance(std::min(wanted, iterationsLeft)); });
    awaitJob();
    context_.statistics.iterations += spent;
    isProvingExhausted_ = proofThread_->hasEnded();
    acceptProof();
    planNextTurn();
}

void SolveRun::planNextTurn() {
    switch (proof_->kind()) {
        case ProofKind::LinearProgram:
            searchLeft_ = 0;
            break;
        case ProofKind::Tree:
            searchLeft_ = effort_ / visitsPerMove / treeTurnsPerSearchTurn;
            break;
        case ProofKind::Other:
            searchLeft_ = effort_ / visitsPerMove;
            break;
    }
    effort_ = std::min(effort_ * effortGrowth, largestEffort);
}

void SolveRun::concludeProof() {
    if (!proofThread_ || proofThread_->hasEnded()) return;
    proofThread_->conclude();
    isProvingExhausted_ = true;
    acceptProof();
}

void SolveRun::acceptProof() {
    Solution& solution = context_.solution;
    if (proof_->outcome() == Preparation::Outcome::Inconsistent) {
        solution.proveInconsistent();
        return;
    }
    if (!searchers_ && !proof_->domain().empty()) domain_ = proof_->domain();
    const ProvedIncumbent& incumbent = proof_->incumbent();
    if (!incumbent.hasPoint()) return;
    Incumbent claimed{incumbent.point(), incumbent.verdict(), 0.0};
    if (proof_->outcome() == Preparation::Outcome::Optimal) {
        acceptOptimum(std::move(claimed));
    } else if (solution.isImprovedBy(claimed)) {
        solution.replace(std::move(claimed));
        if (searchers_) searchers_->spread();
    }
}

void SolveRun::acceptOptimum(Incumbent claimed) {
    Solution& solution = context_.solution;
    // A point that beats the "optimum" refutes the proof, unless by no more than tolerances allow.
    if (!claimed.verdict.feasible ||
        isClearlyBetter(context_.model, solution.verdict(), claimed.verdict)) {
        return;
    }
    solution.replace(std::move(claimed));
    solution.proveOptimal();
}

void SolveRun::makeSearchers() {
    const int nbWorkers = team_.nbWorkers();
    searchers_.emplace(context_.model, context_.parameters, domain_, nbWorkers);
    team_.start(nbWorkers, [this](int k) { searchers_->create(k, context_.solution.point()); });
    awaitJob();
    searchers_->share(context_.solution);
}

void SolveRun::search(std::int64_t iterationsLeft) {
    if (!searchers_) {
        makeSearchers();
        return;
    }
    const std::int64_t nbWorkers = team_.nbWorkers();
    const std::int64_t sinceTick = context_.statistics.iterations - lastTickIterations_;
    // A round ends exactly where a limit, a tick or the turn of proving comes.
    std::int64_t nbMoves = std::min({nbWorkers * searchers_->movesPerRound(), iterationsLeft,
                                     context_.parameters.iterationsBetweenTicks - sinceTick});
    if (!isProvingExhausted_) nbMoves = std::min(nbMoves, searchLeft_);
    const std::int64_t share = nbMoves / nbWorkers;
    const std::int64_t rest = nbMoves % nbWorkers;
    team_.start(static_cast<int>(share > 0 ? nbWorkers : rest), [&, share, rest](int k) {
        searchers_->run(k, share + (k < rest ? 1 : 0), context_.stopSignal.workersHalt(),
                        context_.solution.claimed());
    });
    awaitJob();
    searchers_->addTo(context_.statistics);
    searchers_->share(context_.solution);
    if (!isProvingExhausted_) searchLeft_ -= nbMoves;
}

void SolveRun::awaitJob() {
    bool isHalted = false;
    while (true) {
        const auto wakeTime = isHalted ? nextTimeTick_ : std::min(nextTimeTick_, deadline_);
        if (team_.waitUntil(wakeTime)) break;
        if (Clock::now() >= deadline_ && !isHalted) {
            context_.stopSignal.halt();
            isHalted = true;
        }
        if (Clock::now() >= nextTimeTick_) {
            team_.pause(pausePatience);
            emitTimeTickIfDue();
            team_.resume();
        }
    }
    team_.finish();
}

void SolveRun::emit(ls_callback_type type) {
    context_.statistics.elapsed = Clock::now() - start_;
    context_.emit(type);
}

void SolveRun::emitTimeTickIfDue() {
    if (Clock::now() < nextTimeTick_) return;
    nbTimeTicks_ = (nbTimeTicks_ + 1) % ticksPerPeriod;
    if (nbTimeTicks_ == 0) emit(LS_CALLBACK_DISPLAY);
    emit(LS_CALLBACK_TIME_TICKED);
    nextTimeTick_ = Clock::now() + timeBetweenTicks();
}

SolveRun::Clock::duration SolveRun::timeBetweenTicks() const {
    return std::chrono::milliseconds(1000) * context_.parameters.secondsBetweenTicks /
           ticksPerPeriod;
}

void SolveRun::emitIterationTickIfDue() {
    const std::int64_t sinceTick = context_.statistics.iterations - lastTickIterations_;
    if (sinceTick < context_.parameters.iterationsBetweenTicks) return;
    // A turn of proving may pass several ticks at once; they come as one.
    lastTickIterations_ =
        context_.statistics.iterations - sinceTick % context_.parameters.iterationsBetweenTicks;
    emit(LS_CALLBACK_ITERATION_TICKED);
}

}  // namespace engine
