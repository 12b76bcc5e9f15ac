#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "evaluate/pace.hpp"
#include "linear/linear_model.hpp"

namespace engine {

/// Which columns and rows are basic or at which bound: a start for the simplex method.
struct SimplexBasis {
    std::vector<std::uint8_t> column;  ///< [nbColumns] the back end's own numbers
    std::vector<std::uint8_t> row;     ///< [nbRows]
    [[nodiscard]] bool isEmpty() const { return column.empty(); }
};

/// Linear programs that are solved one after the other with small changes, each from the basis of
/// one before. Integrality is ignored.
///
/// States: new, loaded by load(), solved by solve(). Silent; leaves no global state behind.
class SimplexSolver {
public:
    enum class Status { Optimal, Infeasible, Open };

    SimplexSolver() = default;
    SimplexSolver(const SimplexSolver&) = delete;
    SimplexSolver& operator=(const SimplexSolver&) = delete;
    virtual ~SimplexSolver() = default;

    /// Takes columns, bounds and rows of `model` and minimises `cost` [nbColumns].
    /// @param start  of a model with as many columns; it may have fewer rows, or be empty.
    virtual void load(const LinearModel& model, const std::vector<double>& cost,
                      const SimplexBasis& start) = 0;
    /// Takes the rows of `model` from `firstRow` on as further rows. After load().
    virtual void addRows(const LinearModel& model, std::size_t firstRow) = 0;
    virtual void setCost(const std::vector<double>& cost) = 0;
    /// From the basis that there is. Far bounds may be moved: what is sure follows from the
    /// multipliers alone. Spends a step a pivot; Open when the pace ends it, when
    /// `mostPivots` do not do, or when the numbers do not.
    virtual Status solve(Pace& pace, int mostPivots) = 0;
    /// After Infeasible: levels within the bounds with the least sum of what rows miss, and
    /// multipliers that prove it. A ray says the same in theory; in practice there often is none,
    /// or it is too coarse. @return false, and nothing changes, when pace or numbers do not allow
    /// it.
    virtual bool minimiseViolation(Pace& pace, int mostPivots) = 0;

    /// What two changes of a column's bounds cost.
    struct Trial {
        double below;  ///< the optimum grows by at least about this
        double above;
    };
    /// After Optimal: how much dearer the optimum gets, as far as `mostPivots` pivots tell, when
    /// the column may be at most `below`, and when it must be at least `above`; infinity where
    /// nothing seems to be left. The state stays as it is.
    virtual Trial tryBranches(std::int32_t column, double below, double above, Pace& pace,
                              int mostPivots) = 0;

    /// After Optimal: rows form <= 0 that cut the levels off and hold, as far as doubles tell, at
    /// every point of the program at which the integer columns are integers.
    virtual std::vector<LinearForm> integerCuts(const std::vector<std::uint8_t>& isInteger,
                                                std::size_t most, Pace& pace) = 0;

    /// After Optimal, and after a least violation.
    [[nodiscard]] virtual const std::vector<double>& levels() const = 0;  ///< [nbColumns]
    /// After Optimal and a least violation the dual values, after Infeasible a ray of them if there
    /// is one, [nbRows] or empty; as good as doubles are.
    [[nodiscard]] virtual const std::vector<double>& multipliers() const = 0;
    [[nodiscard]] virtual SimplexBasis basis() const = 0;
};

/// None in a build without a back end.
std::unique_ptr<SimplexSolver> makeSimplexSolver();

}  // namespace engine
