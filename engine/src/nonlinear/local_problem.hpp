#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "evaluate/pace.hpp"
#include "nonlinear/nonlinear_program.hpp"

namespace engine {

/// What a local solver is asked: the objective's best value over the rows, near the start.
struct NonlinearProblem {
    NonlinearProgram& program;
    std::vector<double> lower;  ///< [nbVariables] of decisions as reals; equal bounds fix
    std::vector<double> upper;  ///< [nbVariables]
    std::vector<double> start;  ///< [nbVariables]
    /// The objective by priority; below 0, or where there is none: any point.
    int objective = 0;
};

struct NonlinearSettings {
    Pace& pace;  ///< told of every iteration
    int mostIterations = 1000;
    double tolerance = 1e-8;  ///< of rows, absolute, and of optimality conditions, scaled
    /// The start is near the answer: it is not moved far into the bounds' interior.
    bool isStartGood = false;
    /// Every other rule for the barrier parameter is as good; a second try takes the other one.
    bool isBarrierAdaptive = false;
};

struct NonlinearAnswer {
    /// Optimal: conditions of first order hold. Feasible: the rows hold within the tolerance, the
    /// solver ended early. Infeasible: as near to the rows as it gets from here, and not there.
    enum class Status { Optimal, Feasible, Infeasible, Open };
    Status status = Status::Open;
    std::vector<double> levels = {};  ///< [nbVariables] the last point, within bounds; or empty
    std::vector<double> multipliers = {};  ///< [nbRows] of the rows for minimising; empty: unknown
    double violation = 0.0;                ///< largest, absolute, at the levels
    int iterations = 0;
};

/// The part of a problem that a solver works on: decisions that are free and rows that they enter,
/// with the bounds that rows of one decision are. Rows and columns have numbers of their own here.
class LocalProblem {
public:
    /// Bounds from here on count as none: solvers lose digits on them.
    static constexpr double farBound = 1e9;

    explicit LocalProblem(const NonlinearProblem& problem);

    /// A fixed row, or bounds that cross, are violated by more than tolerances explain.
    [[nodiscard]] bool isInfeasible() const { return isInfeasible_; }
    [[nodiscard]] std::size_t nbColumns() const { return decision_.size(); }
    [[nodiscard]] std::size_t nbRows() const { return row_.size(); }
    [[nodiscard]] std::size_t nbEquations() const;
    [[nodiscard]] std::span<const double> lower() const { return lower_; }
    [[nodiscard]] std::span<const double> upper() const { return upper_; }
    [[nodiscard]] std::span<const double> rowLower() const { return rowLower_; }
    [[nodiscard]] std::span<const double> rowUpper() const { return rowUpper_; }
    [[nodiscard]] std::vector<double> start() const;

    [[nodiscard]] std::span<const std::int32_t> jacobianRow() const { return jacobianRow_; }
    [[nodiscard]] std::span<const std::int32_t> jacobianColumn() const { return jacobianColumn_; }
    [[nodiscard]] std::span<const std::int32_t> hessianRow() const { return hessianRow_; }
    [[nodiscard]] std::span<const std::int32_t> hessianColumn() const { return hessianColumn_; }
    [[nodiscard]] bool hasHessian() const { return problem_.program.hasHessian(); }
    /// Operands looked at in one iteration, factorisation included, roughly.
    [[nodiscard]] std::int64_t workPerIteration() const;

    /// All evaluations are for minimising. @param x [nbColumns].
    void moveTo(std::span<const double> x);
    [[nodiscard]] double cost() const;  ///< maybe not finite
    void gradient(std::span<double> values);
    /// @return whether all rows are finite.
    bool rows(std::span<double> values) const;
    void jacobian(std::span<double> values);  ///< [jacobianRow().size()]
    /// @param rowWeight [nbRows], @param values [hessianRow().size()].
    void hessian(double costWeight, std::span<const double> rowWeight, std::span<double> values);

    /// Levels of all decisions for `x`, and multipliers of all rows.
    [[nodiscard]] std::vector<double> levels(std::span<const double> x) const;
    [[nodiscard]] std::vector<double> multipliers(std::span<const double> y) const;
    /// Largest violation at the point moved to.
    [[nodiscard]] double violation() const;

private:
    void absorbBounds();
    void findColumns();
    void findEntries();
    [[nodiscard]] bool hasObjective() const;
    [[nodiscard]] std::size_t objective() const {
        return problem_.program.nbRows() + static_cast<std::size_t>(problem_.objective);
    }
    [[nodiscard]] double sign() const;

    NonlinearProblem problem_;
    std::vector<double> level_;           ///< [nbVariables] fixed ones as they are
    std::vector<std::int32_t> columnOf_;  ///< [nbVariables] or -1
    std::vector<std::int32_t> decision_;  ///< [nbColumns]
    std::vector<double> lower_;           ///< [nbColumns]
    std::vector<double> upper_;
    std::vector<std::int32_t> row_;  ///< [nbRows] of the program
    std::vector<std::uint8_t> isAbsorbed_;
    std::vector<double> rowLower_;
    std::vector<double> rowUpper_;
    std::vector<std::int32_t> jacobianRow_;
    std::vector<std::int32_t> jacobianColumn_;
    std::vector<std::size_t> jacobianEntry_;  ///< of the program
    std::vector<std::int32_t> hessianRow_;
    std::vector<std::int32_t> hessianColumn_;
    std::vector<std::size_t> hessianEntry_;
    std::vector<double> weight_;   ///< [nbFunctions] scratch
    std::vector<double> entries_;  ///< scratch
    bool isInfeasible_ = false;
};

}  // namespace engine
