#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "nonlinear/interior_point.hpp"
#include "nonlinear/kkt_system.hpp"

namespace engine {

using Vector = std::vector<double>;

/// Least relative gains of violation and cost for a step, as in the paper (section 4).
constexpr double leastThetaGain = 1e-5;
constexpr double leastCostGain = 1e-5;

inline double largest(const Vector& v) {
    double most = 0.0;
    for (const double x : v) most = std::max(most, std::fabs(x));
    return most;
}

inline double total(const Vector& v) {
    double sum = 0.0;
    for (const double x : v) sum += std::fabs(x);
    return sum;
}

/// The columns and one slack for each inequality, with bounds; all rows are equations of these.
class InteriorPoint {
public:
    InteriorPoint(LocalProblem& problem, const NonlinearSettings& settings);

    NonlinearAnswer run();

private:
    using Status = NonlinearAnswer::Status;
    static constexpr double infinity = std::numeric_limits<double>::infinity();
    /// What is known at a point of columns and slacks.
    struct Values {
        double cost = 0.0;
        Vector rows;  ///< [nbRows_] residuals of the equations
        bool isFinite = false;
        [[nodiscard]] double theta() const { return total(rows); }
    };
    struct FilterEntry {
        double theta;
        double cost;
    };

    [[nodiscard]] static KktSystem::Pattern patternOf(const LocalProblem& problem);
    void setBounds();
    void moveInside();
    void setScales();
    void startMultipliers();
    Values evaluate(const Vector& z);
    void differentiate();
    [[nodiscard]] double barrierCost(const Vector& z, const Values& at) const;
    [[nodiscard]] Vector dualResidual() const;
    [[nodiscard]] double error(double barrier) const;
    void lowerBarrier();
    bool computeStep();
    bool factorise();
    [[nodiscard]] Vector barrierGradient() const;
    [[nodiscard]] double longestStep(const Vector& z, const Vector& direction, double keep) const;
    [[nodiscard]] double longestDualStep(double keep) const;
    [[nodiscard]] bool isAcceptable(double theta, double cost) const;
    bool search();
    bool tryStep(double length, const Vector& direction, double slope, bool isFirst);
    bool tryCorrection(double length, const Values& trial, double slope);
    bool accepts(double length, double slope, double theta, double cost) const;
    void take(const Vector& z, Values at);
    void takeDuals();
    bool restore();
    bool spend();
    NonlinearAnswer answer(Status status, int iterations);

    LocalProblem& problem_;
    const NonlinearSettings& settings_;
    std::size_t nbColumns_;
    std::size_t nbRows_;
    std::size_t nbPrimal_;              ///< columns and slacks
    std::vector<std::size_t> slackOf_;  ///< [nbRows_] position among primals, or none for equations
    static constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
    KktSystem system_;
    Vector lower_;  ///< [nbPrimal_]
    Vector upper_;
    double costScale_ = 1.0;
    Vector rowScale_;
    double barrier_ = 0.1;

    Vector z_;
    Values at_;
    Vector gradient_;  ///< [nbPrimal_] of the scaled cost
    Vector jacobian_;  ///< entries, scaled, those of the slacks last
    Vector hessian_;
    Vector y_;
    Vector lowerDual_;
    Vector upperDual_;

    Vector step_;  ///< [nbPrimal_ + nbRows_]
    Vector lowerDualStep_;
    Vector upperDualStep_;
    double shift_ = 0.0;      ///< of the Hessian in the system at hand
    double lastShift_ = 0.0;  ///< the last that was needed
    std::vector<FilterEntry> filter_;
    double largestTheta_ = infinity;
    double smallTheta_ = 0.0;
};

}  // namespace engine
