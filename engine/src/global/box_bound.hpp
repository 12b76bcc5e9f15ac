#pragma once

#include <memory>
#include <span>
#include <vector>

#include "back_ends/simplex.hpp"
#include "global/clean_points.hpp"
#include "global/convex_tangents.hpp"
#include "global/cost_goal.hpp"
#include "global/node_queue.hpp"
#include "global/relaxation.hpp"
#include "global/safe_bound.hpp"

namespace engine {

/// What is left of a box.
enum class Fate { Closed, Open };

/// Bounds one box after the other by propagation and linear relaxations, which are solved and cut
/// until nothing is gained, and narrows them by reduced costs.
class BoxBound {
public:
    /// All outlive it. The propagator is in the first box.
    BoxBound(const ClosedModel& model, const FactorableModel& factorable, Propagator& propagator,
             const Point& start, CleanPoints& points, const CostGoal& goal, Pace& pace);

    /// Raises the bound of the box that the propagator is in, and offers the points on the way.
    /// @param withSupport  takes the planes at the incumbent, which is newer than the box.
    /// @return Closed: no point of it is better than the incumbent.
    Fate bound(BoxNode& node, bool withSupport);
    /// Forgets the last box and takes over what a new one has from its parent.
    void begin(const BoxNode& node);

    [[nodiscard]] Relaxation& relaxation() { return relaxation_; }
    [[nodiscard]] const Relaxation& relaxation() const { return relaxation_; }
    /// None in a build without.
    [[nodiscard]] SimplexSolver* simplex() { return simplex_.get(); }
    /// [nbColumns] of the last relaxation; empty: it told nothing.
    [[nodiscard]] const std::vector<double>& levels() const { return levels_; }
    /// How much the bound depends on each definition, at most about 1. [nbDefinitions]
    [[nodiscard]] std::vector<double> weights() const;
    /// The last relaxation has an optimum, from which branches can be tried.
    [[nodiscard]] bool hasOptimum() const { return !multipliers_.empty(); }
    /// What the children of the box take over.
    [[nodiscard]] const std::shared_ptr<const std::vector<Cut>>& cuts() const {
        return usefulCuts_;
    }
    [[nodiscard]] const std::shared_ptr<const SimplexBasis>& basis() const { return basis_; }
    /// Ranges of the box that were found to be smaller.
    [[nodiscard]] const std::vector<ValueLimit>& found() const { return found_; }
    /// Some box was closed without regard to the tolerance of rows.
    [[nodiscard]] bool hasClosedStrictly() const { return isClosedStrictly_; }
    /// From now on there are no cuts of integers, which rest on doubles, and nothing was closed.
    /// @return whether there were any.
    bool dropIntegerCuts();
    /// Operands that propagation may look at for a box.
    [[nodiscard]] std::int64_t propagationWork() const { return propagationWork_; }

private:
    Fate boundByPropagation(BoxNode& node);
    Fate boundWithIntegerCuts(BoxNode& node);
    Fate solveRelaxation(BoxNode& node, std::vector<Cut>& cuts, bool& isTightened);
    [[nodiscard]] bool raise(BoxNode& node, double lower) const;
    std::size_t separate(std::vector<Cut>& cuts);
    std::size_t addIntegerCuts(std::vector<Cut>& cuts);
    bool tighten(const SafeBound& safe);
    bool isContradicted(const Box& box);
    [[nodiscard]] const Point& inside() const;
    void supportIncumbent(std::vector<Cut>& cuts);
    void offer(const std::vector<double>& levels);
    [[nodiscard]] Point pointAt(const std::vector<double>& levels) const;
    void keepUsefulCuts(const std::vector<Cut>& cuts);

    const ClosedModel& model_;
    const FactorableModel& factorable_;
    Propagator& propagator_;
    const Point& start_;
    CleanPoints& points_;
    const CostGoal& goal_;
    Pace& pace_;
    std::unique_ptr<SimplexSolver> simplex_;
    Relaxation relaxation_;
    ConvexTangents tangents_;
    std::int64_t propagationWork_;
    bool isClosedStrictly_ = false;
    bool mayCutIntegers_ = true;
    bool hasIntegerCuts_ = false;
    int nbVainCutRounds_ = 0;
    double cutBound_ = infinity;  ///< with the integer cuts so far; infinite: there are none to add
    // Of the box under examination.
    std::vector<double> levels_;
    std::vector<double> multipliers_;  ///< of the last optimum
    double lower_ = -infinity;         ///< that it proves
    std::shared_ptr<const std::vector<Cut>> usefulCuts_;
    std::shared_ptr<const SimplexBasis> basis_;
    std::vector<ValueLimit> found_;
};

}  // namespace engine
