#include "global/spatial_tree.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "back_ends/simplex.hpp"
#include "global/bound_tightening.hpp"
#include "global/branching.hpp"
#include "global/cones.hpp"
#include "global/convex_tangents.hpp"
#include "global/integral_objective.hpp"
#include "global/node_queue.hpp"
#include "global/part_of_pace.hpp"
#include "global/relaxation.hpp"
#include "global/safe_bound.hpp"
#include "model/domain.hpp"

namespace engine {
namespace {

/// Objectives nearer than this, absolute and relative above 1, are the same: a bound that leaves no
/// more proves an incumbent. A little inside the tolerance of relations.
constexpr double optimalityGap = 0.9e-6;
/// A better objective of an all-integer one is better by a step; the rest is rounding.
constexpr double stepRounding = 1e-6;
constexpr std::size_t mostWaitingNodes = 200'000;
constexpr int roundsAtRoot = 30;
constexpr int roundsBelow = 4;
constexpr int mostPivotsBelow = 5'000;
constexpr int mostPivotsAtRoot = 200'000;
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
/// Rounds of cuts and passes of tightening end when they gain less than this part of the gap.
constexpr double leastGain = 1e-2;

enum class Fate { Closed, Open };

class SpatialTree {
public:
    SpatialTree(const ClosedModel& model, const FactorableModel& factorable, Propagator& propagator,
                const Point& start, CleanPoints& points, const SpatialSettings& settings);

    SpatialOutcome run();

private:
    [[nodiscard]] double costOf(double objective) const { return sign_ * objective; }
    [[nodiscard]] double cutoff() const;
    void addCutoff(std::vector<ValueLimit>& restrictions) const;
    bool enter(const BoxNode& node);
    bool takeIncumbent();
    void examine(BoxNode& node);
    Fate bound(BoxNode& node);
    Fate boundByPropagation(BoxNode& node);
    std::size_t separate(std::vector<Cut>& cuts);
    Fate solveRelaxation(BoxNode& node, std::vector<Cut>& cuts, bool& isTightened);
    [[nodiscard]] bool raise(BoxNode& node, double lower) const;
    bool tighten(const SafeBound& bound);
    bool isContradicted(const Box& box);
    [[nodiscard]] const Point& inside() const;
    void supportIncumbent(std::vector<Cut>& cuts);
    void offer(const std::vector<double>& levels);
    [[nodiscard]] Point pointAt(const std::vector<double>& levels) const;
    [[nodiscard]] std::vector<double> weightsOf(const std::vector<double>& multipliers) const;
    void keepUsefulCuts(const std::vector<Cut>& cuts);
    bool mayTry();
    void branch(BoxNode& node);
    void addChild(const BoxNode& node, const BranchPoint& split, bool isUpper);
    void improve(const Point& point);
    void improveFromRelaxation();
    bool tightenRoot();
    bool spendOnNode();
    BoxNode takeNode();
    void report();
    [[nodiscard]] SpatialOutcome outcome(bool isFinished);

    const ClosedModel& model_;
    const FactorableModel& factorable_;
    Propagator& propagator_;
    const Point& start_;
    CleanPoints& points_;
    const FeasibleIncumbent& incumbent_;
    SpatialSettings settings_;
    double sign_ = 1.0;
    std::vector<double> cost_;  ///< [nbColumns]
    double costConstant_ = 0.0;
    double step_ = 0.0;  ///< better objectives are better by at least this
    std::unique_ptr<SimplexSolver> simplex_;
    Relaxation relaxation_;
    ConvexTangents tangents_;
    Branching branching_;
    NodeQueue queue_{mostWaitingNodes};
    std::size_t root_ = 0;  ///< mark of the propagator
    PartOfPace treePace_;
    PartOfPace improvementPace_;
    PartOfPace trialPace_;
    std::int64_t nodeWork_;  ///< operands that propagation may look at for a box
    std::int64_t toldWork_;  ///< of the propagator
    std::int64_t nbNodes_ = 0;
    std::int64_t nbMade_ = 0;
    std::int64_t nbMadeBefore_ = 0;  ///< the incumbent
    double known_ = infinity;        ///< cutoff that the waiting boxes meet
    std::int64_t nextImprovement_ = 1;
    double unresolved_ = infinity;  ///< least bound of boxes that could not be split
    double reported_ = -infinity;
    bool isClosedStrictly_ = false;  ///< some box, without regard to the tolerance of rows
    // Of the box under examination.
    std::vector<double> levels_;       ///< empty: the relaxation told nothing
    std::vector<double> multipliers_;  ///< of the last optimum
    std::shared_ptr<const std::vector<Cut>> usefulCuts_;
    std::shared_ptr<const SimplexBasis> basis_;
    std::vector<ValueLimit> found_;  ///< beyond the path: tighter ranges of the box
    std::optional<BoxNode> next_;    ///< where the dive goes on
};

SpatialTree::SpatialTree(const ClosedModel& model, const FactorableModel& factorable,
                         Propagator& propagator, const Point& start, CleanPoints& points,
                         const SpatialSettings& settings)
    : model_(model),
      factorable_(factorable),
      propagator_(propagator),
      start_(start),
      points_(points),
      incumbent_(points.best()),
      settings_(settings),
      cost_(factorable.linear.nbColumns(), 0.0),
      simplex_(makeSimplexSolver()),
      relaxation_(factorable, model, propagator),
      tangents_(factorable, model, propagator),
      branching_(relaxation_),
      treePace_(settings.pace),
      improvementPace_(settings.pace),
      trialPace_(settings.pace),
      nodeWork_(1000 + 20 * static_cast<std::int64_t>(model.operand.size())),
      toldWork_(propagator.work()) {
    if (model.objective.empty()) return;
    const LinearObjective& objective = factorable.linear.objective.front();
    sign_ = objective.maximise ? -1.0 : 1.0;
    costConstant_ = sign_ * objective.form.constant;
    for (std::size_t k = 0; k < objective.form.column.size(); ++k) {
        cost_[static_cast<std::size_t>(objective.form.column[k])] =
            sign_ * objective.form.coefficient[k];
    }
    step_ = stepOf(factorable, objective.form);
}

/// Boxes that cost this or more cannot better the incumbent by more than the tolerance.
double SpatialTree::cutoff() const {
    if (!incumbent_.hasPoint()) return infinity;
    if (model_.objective.empty()) return -infinity;
    const double value = costOf(incumbent_.verdict().objectives.front().asDouble());
    const double size = std::max(1.0, std::fabs(value));
    return std::min(value - optimalityGap * size,
                    step_ > 0.0 ? value - step_ + stepRounding * size : infinity);
}

void SpatialTree::addCutoff(std::vector<ValueLimit>& restrictions) const {
    const double most = cutoff();
    if (std::isinf(most) || model_.objective.empty()) return;
    const ExpressionIndex e = model_.objective.front().expression;
    restrictions.push_back(sign_ > 0.0 ? ValueLimit{e, -infinity, most}
                                       : ValueLimit{e, -most, infinity});
}

/// Brings the propagator into the box. @return false: it is proved empty or too dear.
bool SpatialTree::enter(const BoxNode& node) {
    propagator_.undoTo(root_);
    std::vector<ValueLimit> restrictions;
    for (const BoxPath* path = node.path.get(); path != nullptr; path = path->parent.get()) {
        restrictions.insert(restrictions.end(), path->restrictions.begin(),
                            path->restrictions.end());
    }
    addCutoff(restrictions);
    return propagator_.restrictAll(restrictions, nodeWork_);
}

bool SpatialTree::raise(BoxNode& node, double lower) const {
    if (lower > node.bound) node.bound = lower;
    return node.bound >= cutoff();
}

Fate SpatialTree::boundByPropagation(BoxNode& node) {
    if (model_.objective.empty()) return Fate::Open;
    const Range r = propagator_.rangeOf(model_.objective.front().expression);
    if (r.mayBeNan) return Fate::Open;
    return raise(node, sign_ > 0.0 ? r.lower : -r.upper) ? Fate::Closed : Fate::Open;
}

void SpatialTree::offer(const std::vector<double>& levels) {
    points_.offer(pointAt(levels));
    if (factorable_.cone.empty()) return;
    std::vector<double> raised = levels;
    if (raiseHeads(factorable_.cone, raised)) points_.offer(pointAt(raised));
}

/// Within the box, integers rounded.
Point SpatialTree::pointAt(const std::vector<double>& levels) const {
    Point point = start_;
    for (std::size_t j = 0; j < levels.size(); ++j) {
        const DecisionIndex d = factorable_.linear.decision[j];
        if (d < 0) continue;
        const Interval domain = propagator_.domainOf(d);
        const double level = model_.isDiscrete(d) ? std::round(levels[j]) : levels[j];
        point[static_cast<std::size_t>(d)] =
            valueFor(model_, d, std::clamp(level, domain.lower, domain.upper));
    }
    return point;
}

/// What reduced costs say of the columns: farther from its bound a column makes the box too dear.
bool SpatialTree::tighten(const SafeBound& safe) {
    const double room = cutoff() - (safe.lower + costConstant_);
    if (!std::isfinite(room) || room < 0.0) return false;
    bool isWorthIt = false;
    std::vector<ValueLimit> restrictions;
    for (std::size_t j = 0; j < safe.reducedCost.size(); ++j) {
        const ColumnOrigin& origin = factorable_.origin[j];
        const double d = safe.reducedCost[j];
        const auto column = static_cast<std::int32_t>(j);
        if (d == 0.0 || !relaxation_.canLimit(column)) continue;
        const Range r = relaxation_.rangeOf(column);
        const double way = above(room / std::fabs(d));
        const double width = r.upper - r.lower;
        if (!(way < width)) continue;
        const double lower = d > 0.0 ? r.lower : below(r.upper - way);
        const double upper = d > 0.0 ? above(r.lower + way) : r.upper;
        isWorthIt = isWorthIt || way < 0.7 * width;
        restrictions.push_back(limitOf(origin, lower, upper));
    }
    if (restrictions.empty()) return false;
    found_.insert(found_.end(), restrictions.begin(), restrictions.end());
    return isWorthIt;
}

/// Do the multipliers prove that the rows contradict each other? Boxes whose points hold by the
/// judge's tolerance alone are of no interest, since bounds are about the rows as they stand; but
/// then the model may not be called inconsistent.
bool SpatialTree::isContradicted(const Box& box) {
    const LinearModel& rows = relaxation_.rows();
    std::vector<double> multipliers = simplex_->multipliers();
    if (provesInfeasibility(rows, box, multipliers)) return true;
    const std::vector<double> nothing(rows.nbColumns(), 0.0);
    for (int sign = 0; sign < 2; ++sign) {
        if (safeBoundOf(rows, nothing, box, multipliers, RowSides::AsTheyStand).lower > 0.0) {
            isClosedStrictly_ = true;
            return true;
        }
        for (double& y : multipliers) y = -y;
    }
    return false;
}

std::size_t SpatialTree::separate(std::vector<Cut>& cuts) {
    return relaxation_.separate(levels_, cuts) + tangents_.separate(levels_, inside(), cuts) +
           addPlanes(factorable_.cone, levels_, Planes::Violated, cuts);
}

/// Solves and cuts until nothing is gained. `isTightened` tells whether ranges were found to be
/// smaller.
Fate SpatialTree::solveRelaxation(BoxNode& node, std::vector<Cut>& cuts, bool& isTightened) {
    const bool isRoot = node.depth == 0;
    const int mostPivots = isRoot ? mostPivotsAtRoot : mostPivotsBelow;
    const int mostRounds = isRoot ? roundsAtRoot : roundsBelow;
    for (const Cut& cut : cuts) relaxation_.addCut(cut);
    simplex_->load(relaxation_.rows(), cost_, node.basis ? *node.basis : SimplexBasis{});
    levels_.clear();
    multipliers_.clear();
    double before = -infinity;
    for (int round = 0;; ++round) {
        const SimplexSolver::Status status = simplex_->solve(treePace_, mostPivots);
        const LinearModel& rows = relaxation_.rows();
        const Box box{rows.lower, rows.upper};
        if (status == SimplexSolver::Status::Infeasible) {
            levels_.clear();
            if (isContradicted(box)) return Fate::Closed;
            if (!simplex_->minimiseViolation(treePace_, mostPivots)) return Fate::Open;
            levels_ = simplex_->levels();
            return isContradicted(box) ? Fate::Closed : Fate::Open;
        }
        if (status != SimplexSolver::Status::Optimal) return Fate::Open;
        levels_ = simplex_->levels();
        multipliers_ = simplex_->multipliers();
        const SafeBound safe = safeBoundOf(rows, cost_, box, multipliers_, RowSides::AsTheyStand);
        const double lower = safe.lower + costConstant_;
        if (raise(node, lower)) return Fate::Closed;
        offer(levels_);
        if (node.bound >= cutoff()) return Fate::Closed;
        // Of the program's own bound: the box may have a better one for a long while.
        const double gap = std::min(cutoff() - lower, std::max(1.0, std::fabs(lower)));
        const bool isSlow = round > 1 && std::isfinite(before) && lower - before < leastGain * gap;
        before = lower;
        const std::size_t nbCuts = cuts.size();
        const bool isLast =
            round >= mostRounds || isSlow || treePace_.mustEnd() || separate(cuts) == 0;
        if (isLast) {
            isTightened = tighten(safe);
            return Fate::Open;
        }
        const std::size_t firstNew = rows.nbRows();
        for (std::size_t k = nbCuts; k < cuts.size(); ++k) relaxation_.addCut(cuts[k]);
        simplex_->addRows(relaxation_.rows(), firstNew);
    }
}

/// The cuts that the last optimum leans on go to the children, with the basis for the other rows.
void SpatialTree::keepUsefulCuts(const std::vector<Cut>& cuts) {
    SimplexBasis basis = simplex_->basis();
    auto useful = std::make_shared<std::vector<Cut>>();
    std::vector<std::uint8_t> rows(
        basis.row.begin(),
        basis.row.begin() + static_cast<std::ptrdiff_t>(relaxation_.nbFixedRows()));
    for (std::size_t k = 0; k < cuts.size(); ++k) {
        const std::size_t i = relaxation_.nbFixedRows() + k;
        if (i >= multipliers_.size() || multipliers_[i] == 0.0) continue;
        useful->push_back(cuts[k]);
        rows.push_back(basis.row[i]);
    }
    basis.row = std::move(rows);
    usefulCuts_ = std::move(useful);
    basis_ = std::make_shared<const SimplexBasis>(std::move(basis));
}

/// A point with good chances that expressions are defined there.
const Point& SpatialTree::inside() const {
    return incumbent_.hasPoint() ? incumbent_.point() : start_;
}

/// At an optimum of a convex model its tangents alone prove it.
void SpatialTree::supportIncumbent(std::vector<Cut>& cuts) {
    if (!incumbent_.hasPoint()) return;
    std::vector<Value> values;
    judge(model_, incumbent_.point(), values);
    const std::vector<double> levels = relaxation_.levelsAt(values);
    relaxation_.supportAt(levels, cuts);
    addPlanes(factorable_.cone, levels, Planes::All, cuts);
    tangents_.supportAt(incumbent_.point(), cuts);
}

Fate SpatialTree::bound(BoxNode& node) {
    constexpr int mostPasses = 3;
    if (boundByPropagation(node) == Fate::Closed) return Fate::Closed;
    std::vector<Cut> cuts;
    if (node.cuts) cuts = *node.cuts;
    for (int pass = 0; pass < mostPasses; ++pass) {
        if (!relaxation_.refresh()) return Fate::Closed;
        if (!simplex_) return Fate::Open;
        if (pass == 0 && node.number < nbMadeBefore_) supportIncumbent(cuts);
        bool isTightened = false;
        if (solveRelaxation(node, cuts, isTightened) == Fate::Closed) return Fate::Closed;
        if (levels_.empty()) return Fate::Open;
        keepUsefulCuts(cuts);
        if (!isTightened || pass + 1 == mostPasses) return Fate::Open;
        if (!propagator_.restrictAll(found_, nodeWork_)) return Fate::Closed;
        cuts = *usefulCuts_;
        node.basis = basis_;
    }
    return Fate::Open;
}

std::vector<double> SpatialTree::weightsOf(const std::vector<double>& multipliers) const {
    double largest = 0.0;
    std::vector<double> weights(factorable_.definition.size(), 0.0);
    for (std::size_t k = 0; k < weights.size() && !multipliers.empty(); ++k) {
        const auto [first, last] = relaxation_.rowsOf(k);
        for (std::size_t i = first; i < last; ++i) weights[k] += std::fabs(multipliers[i]);
        largest = std::max(largest, weights[k]);
    }
    // What the bound does not lean on now may matter after the split.
    for (double& w : weights) w = largest > 0.0 ? w / largest + 0.01 : 1.0;
    return weights;
}

void SpatialTree::addChild(const BoxNode& node, const BranchPoint& split, bool isUpper) {
    const Range r = relaxation_.rangeOf(split.column);
    auto path = std::make_shared<BoxPath>();
    path->parent = node.path;
    path->restrictions = found_;
    const ColumnOrigin& origin = factorable_.origin[static_cast<std::size_t>(split.column)];
    path->restrictions.push_back(
        limitOf(origin, isUpper ? split.next : r.lower, isUpper ? r.upper : split.point));
    BoxNode child{
        .bound = node.bound,
        .depth = node.depth + 1,
        .number = nbMade_++,
        .path = std::move(path),
        .basis = basis_,
        .cuts = usefulCuts_,
        .split = {split.column, isUpper, isUpper ? split.upperDistance : split.lowerDistance}};
    // The dive follows the level of the relaxation.
    const double level =
        levels_.empty() ? split.point : levels_[static_cast<std::size_t>(split.column)];
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
        if (multipliers_.empty() || !mayTry()) return std::nullopt;
        return simplex_->tryBranches(at.column, at.point, at.next, trialPace_, mostPivotsOfTrial);
    };
    const std::optional<BranchPoint> split =
        levels_.empty() ? branching_.chooseWidest()
                        : branching_.choose(levels_, weightsOf(multipliers_), trial);
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
    if (!settings_.improve || levels_.empty() || nbNodes_ < nextImprovement_) return;
    const double allowed = shareOfImprovement * static_cast<double>(treePace_.spent());
    const std::int64_t spent = improvementPace_.spent() - firstImprovementWork;
    if (static_cast<double>(spent) > allowed) return;
    nextImprovement_ = nbNodes_ + std::max<std::int64_t>(1, nbNodes_ / 2);
    Point point = start_;
    for (std::size_t j = 0; j < levels_.size(); ++j) {
        const DecisionIndex d = factorable_.linear.decision[j];
        if (d >= 0) point[static_cast<std::size_t>(d)] = Value::ofDouble(levels_[j]);
    }
    improve(point);
}

/// @return whether there is a better one than before.
bool SpatialTree::takeIncumbent() {
    if (!(cutoff() < known_)) return false;
    known_ = cutoff();
    nbMadeBefore_ = nbMade_;
    queue_.dropFrom(known_);
    return true;
}

void SpatialTree::examine(BoxNode& node) {
    ++nbNodes_;
    levels_.clear();
    multipliers_.clear();
    found_.clear();
    usefulCuts_ = node.cuts;
    basis_ = node.basis;
    const double before = node.bound;
    const bool isClosed = !enter(node) || bound(node) == Fate::Closed;
    const double gain =
        isClosed ? std::max(0.0, std::min(cutoff(), 1e20) - before) : node.bound - before;
    if (std::isfinite(before)) branching_.learn(node.split, gain);
    if (isClosed) return;
    improveFromRelaxation();
    if (takeIncumbent() && !factorable_.curved.empty() && !levels_.empty()) {
        node.cuts = usefulCuts_;
        node.basis = basis_;
        if (bound(node) == Fate::Closed) return;
    }
    if (node.bound >= cutoff()) return;
    branch(node);
}

BoxNode SpatialTree::takeNode() {
    if (next_) return *std::exchange(next_, std::nullopt);
    return queue_.pop();
}

void SpatialTree::report() {
    double least = std::min({queue_.leastBound(), unresolved_, cutoff()});
    if (next_) least = std::min(least, next_->bound);
    if (!(least > reported_) || std::isinf(least)) return;
    reported_ = least;
    if (settings_.onBound) settings_.onBound(sign_ * least);
}

SpatialOutcome SpatialTree::outcome(bool isFinished) {
    using Status = SpatialOutcome::Status;
    SpatialOutcome result{.bound = sign_ * reported_, .nbNodes = nbNodes_};
    const bool isResolved = isFinished && unresolved_ >= cutoff();
    if (isResolved && incumbent_.hasPoint()) result.status = Status::Optimal;
    if (isResolved && !incumbent_.hasPoint() && std::isinf(unresolved_) && !isClosedStrictly_) {
        result.status = Status::Inconsistent;
    }
    return result;
}

/// Narrows the first box. @return false: nothing is left of it.
bool SpatialTree::tightenRoot() {
    if (!simplex_ || !relaxation_.refresh()) return true;
    std::vector<ValueLimit> restrictions;
    addCutoff(restrictions);
    const auto nbDefinitions = static_cast<std::int64_t>(factorable_.definition.size());
    const auto nbEntries = static_cast<std::int64_t>(relaxation_.rows().column.size());
    const std::int64_t nbPivots =
        fewTighteningPivots + tighteningPivotsPerDefinition * nbDefinitions;
    PartOfPace pace(treePace_, std::min(nbPivots * (1000 + nbEntries / 2), mostTighteningWork));
    const bool isOpen =
        tightenByOptimisation(relaxation_, *simplex_, pace, propagator_, nodeWork_, restrictions);
    if (isOpen) root_ = propagator_.mark();
    return isOpen;
}

/// What was propagated and built since the last question.
bool SpatialTree::spendOnNode() {
    const auto nbEntries = static_cast<std::int64_t>(relaxation_.rows().column.size());
    const std::int64_t propagated = propagator_.work() - toldWork_;
    toldWork_ += propagated;
    return treePace_.spend(1000 + propagated + workPerEntry * nbEntries);
}

SpatialOutcome SpatialTree::run() {
    root_ = propagator_.mark();
    if (settings_.improve && !incumbent_.hasPoint()) improve(start_);
    if (tightenRoot()) queue_.push({.bound = -infinity, .number = nbMade_++});
    while (next_ || !queue_.isEmpty()) {
        if (settings_.exchange) settings_.exchange();
        takeIncumbent();
        BoxNode node = takeNode();
        if (node.bound >= cutoff()) continue;
        if (!spendOnNode() || treePace_.mustEnd()) {
            queue_.push(std::move(node));
            report();
            return outcome(/*isFinished=*/false);
        }
        examine(node);
        takeIncumbent();
        report();
    }
    report();
    return outcome(/*isFinished=*/true);
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
