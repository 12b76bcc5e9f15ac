#include "global/spatial_tree.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "global/bound_tightening.hpp"
#include "global/box_bound.hpp"
#include "global/branching.hpp"
#include "global/cost_goal.hpp"
#include "global/node_queue.hpp"
#include "global/part_of_pace.hpp"
#include "model/domain.hpp"

namespace engine {
namespace {

constexpr std::size_t mostWaitingNodes = 200'000;
constexpr int mostPivotsOfTrial = 100;
/// Trials of splits may take this part of the work that the tree takes.
constexpr double shareOfTrials = 0.5;
/// Pivots of the first tightening, for each definition and on the whole.
constexpr std::int64_t tighteningPivotsPerDefinition = 200;
constexpr std::int64_t fewTighteningPivots = 2'000;
constexpr std::int64_t mostTighteningWork = 70'000'000;
/// Local solves may take this part of the work that the tree takes, and this much in any case.
constexpr double shareOfImprovement = 0.3;
constexpr std::int64_t firstImprovementWork = 30'000'000;
/// Work of a row's entry when rows are built, loaded and checked.
constexpr std::int64_t workPerEntry = 30;

class SpatialTree {
public:
    SpatialTree(const ClosedModel& model, const FactorableModel& factorable, Propagator& propagator,
                const Point& start, CleanPoints& points, const SpatialSettings& settings);

    SpatialOutcome run();

private:
    bool enter(const BoxNode& node);
    bool takeIncumbent();
    void examine(BoxNode& node);
    bool mayTry();
    void branch(BoxNode& node);
    void addChild(const BoxNode& node, const BranchPoint& split, bool isUpper);
    void improve(const Point& point);
    void improveFromRelaxation();
    bool tightenRoot();
    bool search();
    bool spendOnNode();
    BoxNode takeNode();
    void report();
    [[nodiscard]] SpatialOutcome outcome(bool isFinished);

    const ClosedModel& model_;
    const FactorableModel& factorable_;
    Propagator& propagator_;
    const Point& start_;
    SpatialSettings settings_;
    PartOfPace treePace_;
    CostGoal goal_;
    BoxBound box_;
    Branching branching_;
    NodeQueue queue_{mostWaitingNodes};
    std::size_t root_ = 0;  ///< mark of the propagator
    PartOfPace improvementPace_;
    PartOfPace trialPace_;
    std::int64_t toldWork_;  ///< of the propagator
    std::int64_t nbNodes_ = 0;
    std::int64_t nbMade_ = 0;
    std::int64_t nbMadeBefore_ = 0;  ///< the incumbent
    double known_ = infinity;        ///< cutoff that the waiting boxes meet
    std::int64_t nextImprovement_ = 1;
    double unresolved_ = infinity;  ///< least bound of boxes that could not be split
    double reported_ = -infinity;
    std::optional<BoxNode> next_;  ///< where the dive goes on
};

SpatialTree::SpatialTree(const ClosedModel& model, const FactorableModel& factorable,
                         Propagator& propagator, const Point& start, CleanPoints& points,
                         const SpatialSettings& settings)
    : model_(model),
      factorable_(factorable),
      propagator_(propagator),
      start_(start),
      settings_(settings),
      treePace_(settings.pace),
      goal_(model, factorable, points.best()),
      box_(model, factorable, propagator, start, points, goal_, treePace_),
      branching_(box_.relaxation()),
      improvementPace_(settings.pace),
      trialPace_(settings.pace),
      toldWork_(propagator.work()) {}

/// Brings the propagator into the box. @return false: it is proved empty or too dear.
bool SpatialTree::enter(const BoxNode& node) {
    propagator_.undoTo(root_);
    std::vector<ValueLimit> restrictions;
    for (const BoxPath* path = node.path.get(); path != nullptr; path = path->parent.get()) {
        restrictions.insert(restrictions.end(), path->restrictions.begin(),
                            path->restrictions.end());
    }
    goal_.addCutoff(restrictions);
    return propagator_.restrictAll(restrictions, box_.propagationWork());
}

void SpatialTree::addChild(const BoxNode& node, const BranchPoint& split, bool isUpper) {
    const Range r = box_.relaxation().rangeOf(split.column);
    auto path = std::make_shared<BoxPath>();
    path->parent = node.path;
    path->restrictions = box_.found();
    const ColumnOrigin& origin = factorable_.origin[static_cast<std::size_t>(split.column)];
    path->restrictions.push_back(
        limitOf(origin, isUpper ? split.next : r.lower, isUpper ? r.upper : split.point));
    BoxNode child{
        .bound = node.bound,
        .depth = node.depth + 1,
        .number = nbMade_++,
        .path = std::move(path),
        .basis = box_.basis(),
        .cuts = box_.cuts(),
        .split = {split.column, isUpper, isUpper ? split.upperDistance : split.lowerDistance}};
    // The dive follows the level of the relaxation.
    const double level =
        box_.levels().empty() ? split.point : box_.levels()[static_cast<std::size_t>(split.column)];
    const bool isNearer = isUpper == (level > 0.5 * (split.point + split.next));
    if (isNearer && !next_) {
        next_ = std::move(child);
    } else {
        queue_.push(std::move(child));
    }
}

bool SpatialTree::mayTry() {
    constexpr double first = 1e7;
    return static_cast<double>(trialPace_.spent()) <
               first + shareOfTrials * static_cast<double>(treePace_.spent()) &&
           !trialPace_.mustEnd();
}

void SpatialTree::branch(BoxNode& node) {
    const auto trial = [&](const BranchPoint& at) -> std::optional<SimplexSolver::Trial> {
        if (!box_.hasOptimum() || !mayTry()) return std::nullopt;
        return box_.simplex()->tryBranches(at.column, at.point, at.next, trialPace_,
                                           mostPivotsOfTrial);
    };
    const std::optional<BranchPoint> split =
        box_.levels().empty() ? branching_.chooseWidest()
                              : branching_.choose(box_.levels(), box_.weights(), trial);
    if (!split) {
        unresolved_ = std::min(unresolved_, node.bound);
        return;
    }
    addChild(node, *split, /*isUpper=*/false);
    addChild(node, *split, /*isUpper=*/true);
}

/// Local search from a point, within the propagator's box.
void SpatialTree::improve(const Point& point) {
    std::vector<Interval> box = model_.domain;
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) {
        box[static_cast<std::size_t>(d)] = propagator_.domainOf(d);
    }
    settings_.improve(point, box, improvementPace_);
}

/// At the first boxes, then more and more rarely.
void SpatialTree::improveFromRelaxation() {
    if (!settings_.improve || box_.levels().empty() || nbNodes_ < nextImprovement_) return;
    const double allowed = shareOfImprovement * static_cast<double>(treePace_.spent());
    const std::int64_t spent = improvementPace_.spent() - firstImprovementWork;
    if (static_cast<double>(spent) > allowed) return;
    nextImprovement_ = nbNodes_ + std::max<std::int64_t>(1, nbNodes_ / 2);
    Point point = start_;
    for (std::size_t j = 0; j < box_.levels().size(); ++j) {
        const DecisionIndex d = factorable_.linear.decision[j];
        if (d >= 0) point[static_cast<std::size_t>(d)] = Value::ofDouble(box_.levels()[j]);
    }
    improve(point);
}

/// @return whether there is a better one than before.
bool SpatialTree::takeIncumbent() {
    if (!(goal_.cutoff() < known_)) return false;
    known_ = goal_.cutoff();
    nbMadeBefore_ = nbMade_;
    queue_.dropFrom(known_);
    return true;
}

void SpatialTree::examine(BoxNode& node) {
    ++nbNodes_;
    box_.begin(node);
    const double before = node.bound;
    const bool isClosed =
        !enter(node) || box_.bound(node, node.number < nbMadeBefore_) == Fate::Closed;
    const double gain =
        isClosed ? std::max(0.0, std::min(goal_.cutoff(), 1e20) - before) : node.bound - before;
    if (std::isfinite(before)) branching_.learn(node.split, gain);
    if (isClosed) return;
    improveFromRelaxation();
    if (takeIncumbent() && !factorable_.curved.empty() && !box_.levels().empty()) {
        node.cuts = box_.cuts();
        node.basis = box_.basis();
        if (box_.bound(node, /*withSupport=*/true) == Fate::Closed) return;
    }
    if (node.bound >= goal_.cutoff()) return;
    branch(node);
}

BoxNode SpatialTree::takeNode() {
    if (next_) return *std::exchange(next_, std::nullopt);
    return queue_.pop();
}

void SpatialTree::report() {
    double least = std::min({queue_.leastBound(), unresolved_, goal_.cutoff()});
    if (next_) least = std::min(least, next_->bound);
    if (!(least > reported_) || std::isinf(least)) return;
    reported_ = least;
    if (settings_.onBound) settings_.onBound(goal_.sign() * least);
}

SpatialOutcome SpatialTree::outcome(bool isFinished) {
    using Status = SpatialOutcome::Status;
    SpatialOutcome result{.bound = goal_.sign() * reported_, .nbNodes = nbNodes_};
    const bool isResolved = isFinished && unresolved_ >= goal_.cutoff();
    if (isResolved && goal_.incumbent().hasPoint()) result.status = Status::Optimal;
    if (isResolved && !goal_.incumbent().hasPoint() && std::isinf(unresolved_) &&
        !box_.hasClosedStrictly()) {
        result.status = Status::Inconsistent;
    }
    return result;
}

/// Narrows the first box. @return false: nothing is left of it.
bool SpatialTree::tightenRoot() {
    if (box_.simplex() == nullptr || !box_.relaxation().refresh()) return true;
    std::vector<ValueLimit> restrictions;
    goal_.addCutoff(restrictions);
    const auto nbDefinitions = static_cast<std::int64_t>(factorable_.definition.size());
    const auto nbEntries = static_cast<std::int64_t>(box_.relaxation().rows().column.size());
    const std::int64_t nbPivots =
        fewTighteningPivots + tighteningPivotsPerDefinition * nbDefinitions;
    PartOfPace pace(treePace_, std::min(nbPivots * (1000 + nbEntries / 2), mostTighteningWork));
    const bool isOpen = tightenByOptimisation(box_.relaxation(), *box_.simplex(), pace, propagator_,
                                              box_.propagationWork(), restrictions);
    if (isOpen) root_ = propagator_.mark();
    return isOpen;
}

/// What was propagated and built since the last question.
bool SpatialTree::spendOnNode() {
    const auto nbEntries = static_cast<std::int64_t>(box_.relaxation().rows().column.size());
    const std::int64_t propagated = propagator_.work() - toldWork_;
    toldWork_ += propagated;
    return treePace_.spend(1000 + propagated + workPerEntry * nbEntries);
}

/// From the first box on. @return false: the pace has ended.
bool SpatialTree::search() {
    queue_.push({.bound = -infinity, .number = nbMade_++});
    while (next_ || !queue_.isEmpty()) {
        if (settings_.exchange) settings_.exchange();
        takeIncumbent();
        BoxNode node = takeNode();
        if (node.bound >= goal_.cutoff()) continue;
        if (!spendOnNode() || treePace_.mustEnd()) {
            queue_.push(std::move(node));
            report();
            return false;
        }
        examine(node);
        takeIncumbent();
        report();
    }
    return true;
}

SpatialOutcome SpatialTree::run() {
    root_ = propagator_.mark();
    if (settings_.improve && !goal_.incumbent().hasPoint()) improve(start_);
    bool isFinished = !tightenRoot() || search();
    // What rests on doubles is not enough for a proof that there is no point at all.
    const bool isEmpty = isFinished && !goal_.incumbent().hasPoint() && std::isinf(unresolved_);
    if (isEmpty && box_.dropIntegerCuts()) isFinished = search();
    if (isFinished) report();
    return outcome(isFinished);
}

}  // namespace

SpatialOutcome searchBoxes(const ClosedModel& model, const FactorableModel& factorable,
                           Propagator& propagator, const Point& start, CleanPoints& points,
                           const SpatialSettings& settings) {
    const std::size_t before = propagator.mark();
    const SpatialOutcome outcome =
        SpatialTree(model, factorable, propagator, start, points, settings).run();
    propagator.undoTo(before);
    return outcome;
}

}  // namespace engine
