#pragma once

#include <optional>
#include <vector>

#include "evaluate/evaluator.hpp"
#include "evaluate/gradient.hpp"
#include "evaluate/partial_evaluation.hpp"
#include "search/limited_memory.hpp"
#include "search/restrictions.hpp"

namespace engine {

/// Moves all float decisions together towards a local optimum while the discrete ones stand still.
///
/// Bound-constrained augmented Lagrangian (Conn, Gould and Toint, "A globally convergent augmented
/// Lagrangian algorithm", SIAM J. Numer. Anal. 28, 1991) over the relations that the constraints
/// ask for at the starting point (restrictionsAt). The inner problems are solved by projected
/// limited-memory BFGS steps (Bertsekas, "Projected Newton methods for optimization problems with
/// simple constraints", SIAM J. Control 20, 1982).
///
/// It is a state machine so that a search can spread it over its iterations: `start`, then
/// `advance` while `isRunning`; whenever that returns true, `point` is worth a look. Values are
/// computed from scratch on its own arrays: O(operands) for each function value.
class ContinuousDescent {
public:
    /// Both outlive this. @param domain  [nbDecisions], none empty.
    ContinuousDescent(const Plan& plan, const std::vector<Interval>& domain);

    /// There are float decisions that can move, and the model is not too large.
    [[nodiscard]] bool isUseful() const { return !free_.empty(); }
    [[nodiscard]] bool isRunning() const { return isRunning_; }
    /// @param evaluator  standing at the starting point.
    /// @param objective  or none: only feasibility is sought.
    void start(const Evaluator& evaluator, const std::optional<Objective>& objective);
    /// One inner step. @return whether an inner problem has just been solved.
    bool advance();
    [[nodiscard]] const Point& point() const { return point_; }
    /// Values and derivatives computed since construction.
    [[nodiscard]] std::int64_t work() const { return work_; }

private:
    void scaleObjective();
    /// Lagrangian at `x`; infinite where it is not defined. Leaves the values at `x`.
    double evaluateAt(const std::vector<double>& x);
    /// Gradient at the point evaluated last.
    void differentiate();
    /// Fills direction_ and isFree_. @return whether the point is nearly stationary.
    bool chooseDirection();
    [[nodiscard]] bool searchLine();
    void solveNext();

    const ClosedModel& model_;
    const std::vector<Interval>& domain_;
    std::vector<DecisionIndex> free_;  ///< the float decisions, in the order of the vectors below
    std::optional<Objective> objective_;
    double objectiveScale_ = 1.0;
    std::vector<Restriction> restrictions_;
    std::vector<double> multiplier_;  ///< of each restriction
    double penalty_ = 1.0;
    double lastExcess_ = 0.0;
    int nbSolved_ = 0;
    int nbSteps_ = 0;
    bool isRunning_ = false;

    Point point_;
    std::vector<Value> values_;
    PartialEvaluation evaluation_;
    Gradient gradientOf_;
    std::int64_t work_ = 0;
    LimitedMemory memory_;
    double lagrangian_ = 0.0;
    std::vector<double> x_, gradient_, direction_, trial_, step_, change_;
    std::vector<unsigned char> isFree_;
};

}  // namespace engine
