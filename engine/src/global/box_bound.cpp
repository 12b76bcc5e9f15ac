#include "global/box_bound.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "evaluate/judge.hpp"
#include "global/bound_tightening.hpp"
#include "global/cones.hpp"
#include "model/domain.hpp"

namespace engine {
namespace {

constexpr int roundsAtRoot = 30;
constexpr int roundsBelow = 4;
constexpr int mostPivotsBelow = 5'000;
constexpr int mostPivotsAtRoot = 200'000;
/// Rounds of cuts and passes of tightening end when they gain less than this part of the gap.
constexpr double leastGain = 1e-2;
constexpr int mostVainCutRounds = 3;
/// Integer cuts stay when they close this part of the gap.
constexpr double leastGainOfIntegerCuts = 0.1;

}  // namespace

BoxBound::BoxBound(const ClosedModel& model, const FactorableModel& factorable,
                   Propagator& propagator, const Point& start, CleanPoints& points,
                   const CostGoal& goal, Pace& pace)
    : model_(model),
      factorable_(factorable),
      propagator_(propagator),
      start_(start),
      points_(points),
      goal_(goal),
      pace_(pace),
      simplex_(makeSimplexSolver()),
      relaxation_(factorable, model, propagator),
      tangents_(factorable, model, propagator),
      propagationWork_(1000 + 20 * static_cast<std::int64_t>(model.operand.size())) {}

void BoxBound::begin(const BoxNode& node) {
    levels_.clear();
    multipliers_.clear();
    found_.clear();
    usefulCuts_ = node.cuts;
    basis_ = node.basis;
}

/// Within the box, integers rounded.
Point BoxBound::pointAt(const std::vector<double>& levels) const {
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

void BoxBound::offer(const std::vector<double>& levels) {
    points_.offer(pointAt(levels));
    if (factorable_.cone.empty()) return;
    std::vector<double> raised = levels;
    if (raiseHeads(factorable_.cone, raised)) points_.offer(pointAt(raised));
}

bool BoxBound::raise(BoxNode& node, double lower) const {
    if (lower > node.bound) node.bound = lower;
    return node.bound >= goal_.cutoff();
}

Fate BoxBound::boundByPropagation(BoxNode& node) {
    return raise(node, goal_.leastCost(propagator_)) ? Fate::Closed : Fate::Open;
}

/// What reduced costs say of the columns: farther from its bound a column makes the box too dear.
bool BoxBound::tighten(const SafeBound& safe) {
    const double room = goal_.cutoff() - (safe.lower + goal_.constant());
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
bool BoxBound::isContradicted(const Box& box) {
    const LinearModel& rows = relaxation_.rows();
    std::vector<double> multipliers = simplex_->multipliers();
    if (provesInfeasibility(rows, box, multipliers)) {
        // Rows of cones and cuts have no tolerance.
        isClosedStrictly_ = isClosedStrictly_ || hasIntegerCuts_ || !factorable_.cone.empty();
        return true;
    }
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

std::size_t BoxBound::separate(std::vector<Cut>& cuts) {
    return relaxation_.separate(levels_, cuts) + tangents_.separate(levels_, inside(), cuts) +
           addPlanes(factorable_.cone, levels_, Planes::Violated, cuts);
}

std::size_t BoxBound::addIntegerCuts(std::vector<Cut>& cuts) {
    const LinearModel& rows = relaxation_.rows();
    const double gain = leastGain * std::max(1.0, std::fabs(lower_));
    nbVainCutRounds_ = lower_ < cutBound_ + gain ? nbVainCutRounds_ + 1 : 0;
    cutBound_ = std::max(cutBound_, lower_);
    if (nbVainCutRounds_ > mostVainCutRounds) return 0;
    std::vector<Cut> found = simplex_->integerCuts(rows.isInteger, 20 + rows.nbRows() / 4, pace_);
    cuts.insert(cuts.end(), std::make_move_iterator(found.begin()),
                std::make_move_iterator(found.end()));
    return found.size();
}

/// Solves and cuts until nothing is gained. `isTightened` tells whether ranges were found to be
/// smaller.
Fate BoxBound::solveRelaxation(BoxNode& node, std::vector<Cut>& cuts, bool& isTightened) {
    const bool isRoot = node.depth == 0;
    const int mostPivots = isRoot ? mostPivotsAtRoot : mostPivotsBelow;
    const int mostRounds = isRoot ? roundsAtRoot : roundsBelow;
    for (const Cut& cut : cuts) relaxation_.addCut(cut);
    simplex_->load(relaxation_.rows(), goal_.cost(), node.basis ? *node.basis : SimplexBasis{});
    levels_.clear();
    multipliers_.clear();
    double before = -infinity;
    for (int round = 0;; ++round) {
        const SimplexSolver::Status status = simplex_->solve(pace_, mostPivots);
        const LinearModel& rows = relaxation_.rows();
        const Box box{rows.lower, rows.upper};
        if (status == SimplexSolver::Status::Infeasible) {
            levels_.clear();
            multipliers_.clear();
            if (isContradicted(box)) return Fate::Closed;
            if (!simplex_->minimiseViolation(pace_, mostPivots)) return Fate::Open;
            levels_ = simplex_->levels();
            return isContradicted(box) ? Fate::Closed : Fate::Open;
        }
        if (status != SimplexSolver::Status::Optimal) return Fate::Open;
        levels_ = simplex_->levels();
        multipliers_ = simplex_->multipliers();
        const SafeBound safe =
            safeBoundOf(rows, goal_.cost(), box, multipliers_, RowSides::AsTheyStand);
        lower_ = safe.lower + goal_.constant();
        if (raise(node, lower_)) return Fate::Closed;
        offer(levels_);
        if (node.bound >= goal_.cutoff()) return Fate::Closed;
        // Of the program's own bound: the box may have a better one for a long while.
        const double gap = std::min(goal_.cutoff() - lower_, std::max(1.0, std::fabs(lower_)));
        const bool isSlow = round > 1 && std::isfinite(before) && lower_ - before < leastGain * gap;
        before = lower_;
        const std::size_t nbCuts = cuts.size();
        const bool isLast = round >= mostRounds ||
                            ((isSlow || separate(cuts) == 0) &&
                             (std::isinf(cutBound_) || addIntegerCuts(cuts) == 0)) ||
                            pace_.mustEnd();
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
void BoxBound::keepUsefulCuts(const std::vector<Cut>& cuts) {
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
const Point& BoxBound::inside() const {
    return goal_.incumbent().hasPoint() ? goal_.incumbent().point() : start_;
}

/// At an optimum of a convex model its tangents alone prove it.
void BoxBound::supportIncumbent(std::vector<Cut>& cuts) {
    if (!goal_.incumbent().hasPoint()) return;
    std::vector<Value> values;
    judge(model_, goal_.incumbent().point(), values);
    const std::vector<double> levels = relaxation_.levelsAt(values);
    relaxation_.supportAt(levels, cuts);
    addPlanes(factorable_.cone, levels, Planes::All, cuts);
    tangents_.supportAt(goal_.incumbent().point(), cuts);
}

/// At the first box, whose rows hold in all others: a box with more rows takes longer, so that cuts
/// stay only when they gain much.
Fate BoxBound::boundWithIntegerCuts(BoxNode& node) {
    const LinearModel& rows = relaxation_.rows();
    const bool hasIntegers =
        std::find(rows.isInteger.begin(), rows.isInteger.end(), 1) != rows.isInteger.end();
    if (!hasIntegers || !mayCutIntegers_) return Fate::Open;
    const double before = lower_;
    for (const bool withIntegerCuts : {true, false}) {
        std::vector<Cut> cuts = *usefulCuts_;
        node.basis = basis_;
        if (!relaxation_.refresh()) return Fate::Closed;
        cutBound_ = withIntegerCuts ? lower_ : infinity;
        hasIntegerCuts_ = withIntegerCuts;
        bool isTightened = false;
        if (solveRelaxation(node, cuts, isTightened) == Fate::Closed) return Fate::Closed;
        const double room = goal_.cutoff() - before;
        const bool isWorthIt = std::isinf(room) || lower_ - before >= leastGainOfIntegerCuts * room;
        if (withIntegerCuts && (levels_.empty() || !isWorthIt)) continue;
        keepUsefulCuts(cuts);
        break;
    }
    cutBound_ = infinity;
    return Fate::Open;
}

Fate BoxBound::bound(BoxNode& node, bool withSupport) {
    constexpr int mostPasses = 3;
    if (boundByPropagation(node) == Fate::Closed) return Fate::Closed;
    std::vector<Cut> cuts;
    if (node.cuts) cuts = *node.cuts;
    for (int pass = 0; pass < mostPasses; ++pass) {
        if (!relaxation_.refresh()) return Fate::Closed;
        if (!simplex_) return Fate::Open;
        if (pass == 0 && withSupport) supportIncumbent(cuts);
        bool isTightened = false;
        if (solveRelaxation(node, cuts, isTightened) == Fate::Closed) return Fate::Closed;
        if (levels_.empty()) return Fate::Open;
        keepUsefulCuts(cuts);
        if (!isTightened || pass + 1 == mostPasses) break;
        if (!propagator_.restrictAll(found_, propagationWork_)) return Fate::Closed;
        cuts = *usefulCuts_;
        node.basis = basis_;
    }
    return node.depth == 0 ? boundWithIntegerCuts(node) : Fate::Open;
}

bool BoxBound::dropIntegerCuts() {
    isClosedStrictly_ = false;
    mayCutIntegers_ = false;
    return std::exchange(hasIntegerCuts_, false);
}

std::vector<double> BoxBound::weights() const {
    double largest = 0.0;
    std::vector<double> weights(factorable_.definition.size(), 0.0);
    for (std::size_t k = 0; k < weights.size() && !multipliers_.empty(); ++k) {
        const auto [first, last] = relaxation_.rowsOf(k);
        for (std::size_t i = first; i < last; ++i) weights[k] += std::fabs(multipliers_[i]);
        largest = std::max(largest, weights[k]);
    }
    // What the bound does not lean on now may matter after the split.
    for (double& w : weights) w = largest > 0.0 ? w / largest + 0.01 : 1.0;
    return weights;
}

}  // namespace engine
