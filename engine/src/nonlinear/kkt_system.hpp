#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace engine {

/// Systems of the form
///
///     [ H + diag(d)   A'   ] [x]   [a]
///     [ A             -c I ] [y] = [b]
///
/// with one sparse pattern for all: factorised as L D L' in an order that keeps the fill low
/// (approximate minimum degree), without pivoting. For c > 0 and H + diag(d) positive definite
/// every order has such a factorisation (Vanderbei, "Symmetric quasidefinite matrices", SIAM J.
/// Optimization 5, 1995); elsewhere the signs of D and the residuals tell whether it is of use.
class KktSystem {
public:
    /// Positions of entries; those given twice are added. H by its lower triangle.
    struct Pattern {
        std::size_t nbPrimal;
        std::size_t nbDual;
        std::vector<std::int32_t> hessianRow;
        std::vector<std::int32_t> hessianColumn;
        std::vector<std::int32_t> jacobianRow;
        std::vector<std::int32_t> jacobianColumn;
    };
    struct Values {
        std::span<const double> hessian;   ///< as the pattern's
        std::span<const double> diagonal;  ///< [nbPrimal]
        std::span<const double> jacobian;  ///< as the pattern's
        double dualShift;                  ///< c, 0 or more
    };

    explicit KktSystem(Pattern pattern);
    ~KktSystem();
    KktSystem(const KktSystem&) = delete;
    KktSystem& operator=(const KktSystem&) = delete;

    /// @return whether there is a factorisation with nbPrimal positive and nbDual negative pivots:
    /// H + diag(d) is then positive definite on the null space of A.
    bool factorise(const Values& values);
    /// After a factorisation: replaces the right side by the solution, refined.
    /// @return the largest residual relative to the right side.
    double solve(std::span<double> rightSide);
    /// Of one factorisation, in operand visits; 0 before the first.
    [[nodiscard]] std::int64_t work() const { return work_; }

private:
    struct Factor;
    void countWork();

    Pattern pattern_;
    std::unique_ptr<Factor> factor_;
    std::int64_t work_ = 0;
};

}  // namespace engine
