#include "control/solve_run.hpp"

#include <algorithm>
#include <cmath>
#include <thread>
#include <utility>

#include "evaluate/pace.hpp"
#include "model/tolerances.hpp"
#include "search/polish.hpp"

namespace engine {

namespace {

/// How long a tick waits for the workers to pause. They share nothing with the callbacks, so a
/// worker that is deep in a step of a back end may run on behind one.
constexpr auto pausePatience = std::chrono::milliseconds(100);

/// How long a method may take to be held once the solve is to end, before it is left behind.
constexpr auto haltPatience = std::chrono::milliseconds(80);
/// How often the solve thread looks whether it was told to stop.
constexpr auto stopInterval = std::chrono::milliseconds(20);

/// Time ticks come more often than promised: who asks to stop does not wait a whole period, and who
/// writes something once a period is never late by one.
constexpr int ticksPerPeriod = 4;

/// How long the start of a phase may wait for the choice of methods to be told with it.
constexpr auto patienceAtStart = std::chrono::milliseconds(200);

/// By this many iterations a second it is judged whether an iteration tick is overdue, and after
/// this long at the earliest.
constexpr double iterationsPerSecond = 70'000.0;
constexpr std::chrono::duration<double> longestSilence{1.4};

/// Of one worker in a round: some milliseconds, and many times what judging the best point costs at
/// its end, but less than the time between ticks.
std::int64_t workPerRound(const ClosedModel& model) {
    constexpr std::int64_t least = 1'000'000;
    constexpr std::int64_t most = 20'000'000;
    return std::clamp(20 * static_cast<std::int64_t>(model.operand.size()), least, most);
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
      model_(*context_.model),
      start_(Clock::now()),
      deadline_(start_),
      nextTimeTick_(start_),
      lastIterationTick_(start_),
      domain_(model_.domain),
      team_(nbThreadsOf(context_.parameters)),
      schedule_(context_.model, context_.root, context_.solution.point(), context_.parameters.seed,
                [this] {
                    team_.parkIfPaused();
                    return context_.stopSignal.workersHalt().load();
                }) {}

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
    // What was prepared before the first one counts as its time.
    const auto phaseStart = phase_ == nullptr ? start_ : Clock::now();
    phase_ = &phase;
    deadline_ = phaseStart + std::chrono::seconds(phase.timeLimit);
    phaseStartIterations_ = context_.statistics.iterations;
    isPhaseStartUntold_ = true;
    phaseStartTime_ = phaseStart + patienceAtStart;
    while (!context_.stopSignal.isStopped() && !isFinished() && !isLimitReached(phase)) {
        context_.stopSignal.letWork();
        emitPhaseStartIfDue(schedule_.hasChosen());
        if (context_.stopSignal.isStopped()) break;
        if (schedule_.isStageDue()) {
            openStage();
        } else {
            runRound(iterationsLeft(phase));
        }
        emitTimeTickIfDue();
        emitIterationTickIfDue();
    }
    emitPhaseStartIfDue(/*mustNotWait=*/true);
    if (isLastPhase() || context_.stopSignal.isStopped()) concludeMethods();
    if (context_.statistics.iterations > phaseStartIterations_) polish();
    emit(LS_CALLBACK_PHASE_ENDED);
}

void SolveRun::polish() {
    Solution& solution = context_.solution;
    if (!solution.verdict().feasible) return;
    const bool wasReached = isThresholdReached();
    const bool wasProved = solution.isProved();
    std::optional<Point> point = polished(model_, domain_, solution.point(), wasProved);
    if (!point) return;
    Incumbent before = solution.claimed();
    std::vector<Value> values;
    Incumbent after{*std::move(point), {}, 0.0, before.finder};
    after.verdict = judge(model_, after.point, values);
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
    const std::vector<double>& bound = context_.solution.bounds();
    for (std::size_t k = 0; k < bound.size(); ++k) {
        const double value = context_.solution.verdict().objectives[k].asDouble();
        const double tolerance = relationTolerance * std::max(1.0, std::abs(value));
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
            const bool isGood =
                model_.objective[k].maximise ? value >= *thresholds[k] : value <= *thresholds[k];
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

void SolveRun::openStage() {
    team_.start(1, [this](int) { schedule_.openStage(); });
    awaitJob();
    context_.methodChoices = schedule_.choices();
}

void SolveRun::tellMethods() {
    const Solution& solution = context_.solution;
    if (!solution.claimed().verdict.feasible || !solution.verdict().feasible) return;
    for (std::size_t k = 0; k < schedule_.nbRunning(); ++k) {
        FeasibleIncumbent& known = schedule_.method(k).findings().incumbent;
        if (known.hasPoint() && !isBetter(model_, solution.verdict(), known.verdict())) {
            continue;
        }
        known.take({solution.point(), solution.verdict(), 0.0, solution.claimed().finder});
    }
}

void SolveRun::runRound(std::int64_t iterations) {
    using Turn = Schedule::Turn;
    const int nbWorkers = team_.nbWorkers();
    const std::vector<Schedule::Slot> slots =
        schedule_.nextTurns(static_cast<std::size_t>(nbWorkers));
    const auto isOfSearch = [&](const Schedule::Slot& s) { return s.turn == Turn::OfSearch; };
    if (!searchers_ && std::any_of(slots.begin(), slots.end(), isOfSearch)) makeSearchers();
    tellMethods();
    // A round ends where a limit or a tick comes: exactly, when it is the search's alone.
    const std::int64_t sinceTick = context_.statistics.iterations - lastTickIterations_;
    const std::int64_t toEvent =
        std::min(iterations, context_.parameters.iterationsBetweenTicks - sinceTick);
    const std::int64_t fullRound = workPerRound(model_);
    const std::int64_t own = toEvent > fullRound / workPerIteration
                                 ? fullRound
                                 : toEvent * workPerIteration - workToCount_;
    std::vector<std::int64_t> spent(slots.size(), 0);
    team_.start(nbWorkers, [&](int worker) {
        const auto k = static_cast<std::size_t>(worker);
        if (slots[k].turn == Turn::OfMethod) {
            spent[k] = schedule_.advance(slots[k].method, own);
        } else if (slots[k].turn == Turn::OfSearch) {
            searchers_->run(worker, own, context_.stopSignal.workersHalt(),
                            context_.solution.claimed());
        }
    });
    awaitJob(/*hasTurns=*/true);
    acceptAll();
    // What is done side by side counts once: more threads leave no method less than one thread
    // does.
    std::int64_t work = *std::max_element(spent.begin(), spent.end());
    if (searchers_) {
        const std::int64_t ofSearch = searchers_->addTo(context_.statistics);
        schedule_.chargeSearch(ofSearch);
        const auto nbSearching = std::count_if(slots.begin(), slots.end(), isOfSearch);
        if (nbSearching > 0) work = std::max(work, ofSearch / nbSearching);
        // A proof that has been accepted has seen the search's point, and polished it.
        if (!context_.solution.isProved()) searchers_->share(context_.solution);
    }
    workToCount_ += work;
    context_.statistics.iterations += workToCount_ / workPerIteration;
    workToCount_ %= workPerIteration;
}

void SolveRun::concludeMethods() {
    schedule_.conclude(Clock::now() >= deadline_ || context_.stopSignal.isStopped());
    acceptAll();
}

void SolveRun::acceptAll() {
    for (std::size_t k = 0; k < schedule_.nbRunning(); ++k) {
        if (!schedule_.isLeftBehind(k)) accept(schedule_.method(k));
    }
    schedule_.dropEnded();
}

void SolveRun::accept(Method& method) {
    Solution& solution = context_.solution;
    const Findings& findings = method.findings();
    context_.statistics.nodes = std::max(context_.statistics.nodes, findings.nbNodes);
    for (std::size_t k = 0; k < findings.bound.size(); ++k) {
        solution.tightenBound(k, findings.bound[k]);
    }
    if (findings.conclusion.outcome == Outcome::Inconsistent) {
        solution.proveInconsistent();
        return;
    }
    takeDomain(std::exchange(method.findings().domain, {}));
    if (!findings.incumbent.hasPoint()) return;
    if (findings.conclusion.outcome == Outcome::Optimal) {
        acceptOptimum(findings.incumbent.best());
    } else if (solution.isImprovedBy(findings.incumbent.best())) {
        solution.replace(findings.incumbent.best());
        if (searchers_) searchers_->spread();
    }
}

void SolveRun::takeDomain(const std::vector<Interval>& tightened) {
    for (std::size_t d = 0; d < tightened.size(); ++d) {
        const Interval both{std::max(domain_[d].lower, tightened[d].lower),
                            std::min(domain_[d].upper, tightened[d].upper)};
        // Searchers need a value for every decision; a contradiction is the methods' to claim.
        if (!both.isEmpty()) domain_[d] = both;
    }
    if (searchers_ && !tightened.empty()) searchers_->tighten(domain_);
}

void SolveRun::acceptOptimum(Incumbent claimed) {
    Solution& solution = context_.solution;
    if (!claimed.verdict.feasible) return;
    // A point that beats the "optimum" refutes the proof, unless by what the tolerance of the rows
    // gives it and the polish takes back.
    if (isClearlyBetter(model_, solution.verdict(), claimed.verdict)) polish();
    if (isClearlyBetter(model_, solution.verdict(), claimed.verdict)) return;
    solution.replace(std::move(claimed));
    solution.proveOptimal();
}

void SolveRun::makeSearchers() {
    const int nbWorkers = team_.nbWorkers();
    searchers_.emplace(model_, context_.parameters, domain_, nbWorkers);
    team_.start(nbWorkers, [this](int k) { searchers_->create(k, context_.solution.point()); });
    awaitJob();
    searchers_->share(context_.solution);
}

void SolveRun::awaitJob(bool hasTurns) {
    std::optional<Clock::time_point> haltTime;
    while (true) {
        const auto now = Clock::now();
        if (!haltTime && (now >= deadline_ || context_.stopSignal.isStopped())) {
            context_.stopSignal.halt();
            haltTime = now;
        }
        const bool mustEnd =
            hasTurns && haltTime && (isLastPhase() || context_.stopSignal.isStopped());
        if (mustEnd && now >= *haltTime + haltPatience) schedule_.leaveBehind();
        // A stop comes from any thread, at any time.
        auto wakeTime = std::min(nextTimeTick_, now + stopInterval);
        if (!haltTime) wakeTime = std::min(wakeTime, deadline_);
        if (isPhaseStartUntold_) wakeTime = std::min(wakeTime, phaseStartTime_);
        if (team_.waitUntil(wakeTime)) break;
        if (Clock::now() >= nextTimeTick_ ||
            (isPhaseStartUntold_ && Clock::now() >= phaseStartTime_)) {
            team_.pause(pausePatience);
            emitPhaseStartIfDue(/*mustNotWait=*/false);
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

void SolveRun::emitPhaseStartIfDue(bool mustNotWait) {
    if (!isPhaseStartUntold_ || (!mustNotWait && Clock::now() < phaseStartTime_)) return;
    isPhaseStartUntold_ = false;
    emit(LS_CALLBACK_PHASE_STARTED);
}

void SolveRun::emitTimeTickIfDue() {
    if (Clock::now() < nextTimeTick_) return;
    emitPhaseStartIfDue(/*mustNotWait=*/true);
    nbTimeTicks_ = (nbTimeTicks_ + 1) % ticksPerPeriod;
    if (nbTimeTicks_ == 0) emit(LS_CALLBACK_DISPLAY);
    emit(LS_CALLBACK_TIME_TICKED);
    // Where a back end counts nothing for long, the log must not stand still.
    const std::chrono::duration<double> usual(
        static_cast<double>(context_.parameters.iterationsBetweenTicks) / iterationsPerSecond);
    if (Clock::now() - lastIterationTick_ > std::max(usual, longestSilence)) {
        lastIterationTick_ = Clock::now();
        emit(LS_CALLBACK_ITERATION_TICKED);
    }
    nextTimeTick_ = Clock::now() + timeBetweenTicks();
}

SolveRun::Clock::duration SolveRun::timeBetweenTicks() const {
    return std::chrono::milliseconds(1000) * context_.parameters.secondsBetweenTicks /
           ticksPerPeriod;
}

void SolveRun::emitIterationTickIfDue() {
    const std::int64_t sinceTick = context_.statistics.iterations - lastTickIterations_;
    if (sinceTick < context_.parameters.iterationsBetweenTicks) return;
    lastIterationTick_ = Clock::now();
    // A turn of a method may pass several ticks at once; they come as one.
    lastTickIterations_ =
        context_.statistics.iterations - sinceTick % context_.parameters.iterationsBetweenTicks;
    emit(LS_CALLBACK_ITERATION_TICKED);
}

}  // namespace engine
