#pragma once

#include <cstdint>
#include <vector>

#include "evaluate/jacobian.hpp"
#include "evaluate/partial_evaluation.hpp"
#include "search/boxed_least_squares.hpp"
#include "search/restrictions.hpp"

namespace engine {

/// Moves decisions together to the nearest point that meets a list of restrictions, at first order.
///
/// Levenberg-Marquardt steps on the exceeded restrictions (Marquardt, "An algorithm for
/// least-squares estimation of nonlinear parameters", SIAM J. Appl. Math. 11, 1963), with a damping
/// that fades with the residual, which keeps convergence quadratic (Kanzow, Yamashita and
/// Fukushima, "Levenberg-Marquardt methods with strong local convergence properties for solving
/// nonlinear equations with convex constraints", J. Comput. Appl. Math. 172, 2004). A step
/// heeds the domains and the inequalities that it would exceed at first order.
///
/// Decisions move as real numbers, also discrete ones when they are among the free.
class Restoration {
public:
    /// Both outlive this. @param domain  [nbDecisions], none empty.
    Restoration(const ClosedModel& model, const std::vector<Interval>& domain);

    /// @param point         inside the domains where it is free to move.
    /// @param restrictions  stay the same until the next start.
    void start(Point point, std::vector<Restriction> restrictions, std::vector<DecisionIndex> free);
    /// Goes on from where it stands with fewer free decisions; the others have been put to `point`.
    void resume(Point point, std::vector<DecisionIndex> free);
    [[nodiscard]] bool isRunning() const { return isRunning_; }
    /// One step.
    void advance();
    /// Largest scaled excess of a restriction; infinite where one is not defined.
    [[nodiscard]] double excess() const { return excess_; }
    [[nodiscard]] const Point& point() const { return point_; }
    [[nodiscard]] const std::vector<DecisionIndex>& free() const { return free_; }
    /// Values and derivatives computed since construction, and what linear algebra costs as much.
    [[nodiscard]] std::int64_t work() const { return work_; }
    /// Derivatives computed in a step.
    [[nodiscard]] std::size_t size() const { return jacobian_.work(); }

private:
    void begin(Point point, std::vector<DecisionIndex> free);
    /// Half the sum of squared excesses; infinite where one is not defined.
    double meritOf(const std::vector<Value>& values, std::vector<double>& excesses) const;
    [[nodiscard]] double largestOf(const std::vector<double>& excesses) const;
    double computeStep();

    const ClosedModel& model_;
    const std::vector<Interval>& domain_;
    std::vector<Restriction> restrictions_;
    PartialEvaluation evaluation_;
    Jacobian jacobian_;
    BoxedLeastSquares leastSquares_;
    const SparseRows* rows_ = nullptr;  ///< derivatives at point_, when they are fresh

    std::vector<DecisionIndex> free_;     ///< column -> decision
    std::vector<std::int32_t> columnOf_;  ///< [nbDecisions] or -1
    Point point_;
    std::vector<Value> values_, trialValues_;
    std::vector<double> excesses_, trialExcesses_;  ///< of each restriction, negative inside
    double merit_ = 0.0;
    double excess_ = 0.0;
    double damping_ = 1.0;
    int nbSteps_ = 0;
    std::int64_t work_ = 0;
    int nbWeakSteps_ = 0;
    bool isRunning_ = false;

    std::vector<unsigned char> isEquation_;             ///< of each restriction
    std::vector<double> scale_, lower_, upper_, step_;  ///< of each free decision
};

}  // namespace engine
