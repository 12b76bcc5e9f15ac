#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "evaluate/jacobian.hpp"

namespace engine {

/// Minimises a piecewise quadratic over a box:
///
///     q(x) = 1/2 sum over equations (c + A x)^2 + 1/2 sum over inequalities max(0, c + A x)^2
///            + 1/2 damping |x / scale|^2
///
/// by projected Newton steps (Bertsekas, "Projected Newton methods for optimization problems with
/// simple constraints", SIAM J. Control 20, 1982), whose normal equations are factored when they
/// are few, and never formed when they are many (conjugate gradients, CGLS in Paige and Saunders,
/// "LSQR", ACM Trans. Math. Softw. 8, 1982).
class BoxedLeastSquares {
public:
    struct Problem {
        const SparseRows& a;
        std::span<const double> constant;           ///< [nbRows] c
        std::span<const unsigned char> isEquation;  ///< [nbRows]
        std::span<const double> lower;              ///< [nbColumns] 0 or less
        std::span<const double> upper;              ///< [nbColumns] 0 or more
        std::span<const double> scale;              ///< [nbColumns] positive
        double damping;
    };
    /// Starts at 0. @param x  receives the minimiser, [nbColumns].
    /// @return q(x) without the damping term.
    double solve(const Problem& problem, std::vector<double>& x);
    /// Multiplications and additions in the linear systems since construction, in pairs.
    [[nodiscard]] std::int64_t work() const { return work_; }

private:
    double evaluate(const Problem& problem, const std::vector<double>& x);
    double differentiate(const Problem& problem);
    void aim(const Problem& problem);
    [[nodiscard]] bool isActive(const Problem& problem, std::size_t row) const {
        return problem.isEquation[row] != 0 || excess_[row] > 0.0;
    }
    void solveDirectly(const Problem& problem);
    void eliminate(std::size_t j);
    void addSquare(const Problem& problem, std::size_t row);
    void iterate(const Problem& problem);
    double computeDescent(const Problem& problem);
    bool stepTowards(const Problem& problem);

    std::vector<double> x_, trial_, goal_, gradient_;  ///< [nbColumns]
    std::vector<double> excess_;                       ///< [nbRows] c + A x, 0 where it holds
    std::vector<unsigned char> isFree_;                ///< [nbColumns] not held at a border
    double value_ = 0.0;
    std::int64_t work_ = 0;
    double fit_ = 0.0;  ///< value_ without the damping term

    // Of the linear systems, in units of `scale`.
    std::vector<double> diagonal_;                          ///< of the normal equations
    std::vector<double> normal_;                            ///< lower half, by rows
    std::vector<double> y_, direction_, descent_, scaled_;  ///< [nbColumns]
    std::vector<double> residual_, image_;                  ///< [nbRows]
};

}  // namespace engine
