#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include <gmpxx.h>

namespace engine {

/// Homogeneous equations over unknowns whose values are nearly a solution, solved exactly: pivots
/// by Markowitz's rule among the entries that are large for those values, in rationals.
///
/// Equations that come out numerically dependent on others are left unsolved, since data such as
/// 0.1 + 0.2 - 0.3 differ from 0 in doubles only by their rounding, and dividing by that would lead
/// astray.
class RationalElimination {
public:
    /// @param values  [nbUnknowns] none is 0.
    explicit RationalElimination(std::vector<double> values);

    /// sum of coefficient * unknown = 0. @param terms  an unknown at most once.
    void addEquation(const std::vector<std::pair<std::int32_t, double>>& terms);
    /// Near the values handed in. Keeps as many unknowns as have no pivot, at least one.
    /// @return [nbUnknowns], or empty when the work limit was reached.
    std::vector<mpq_class> solve();

private:
    struct Equation {
        std::map<std::int32_t, mpq_class> term;  ///< by unknown
        double size = 0.0;                       ///< of its terms at the start
    };
    struct Pivot {
        std::size_t equation;
        std::int32_t unknown;
    };

    /// Size of a term at the values handed in.
    [[nodiscard]] double weightOf(std::int32_t unknown, const mpq_class& coefficient) const;
    [[nodiscard]] std::int32_t findPivot(const Equation& equation) const;
    void eliminate(const Pivot& pivot);
    void subtract(std::size_t target, const Equation& source, const mpq_class& factor);
    void leave(std::size_t equation);
    void count(const mpq_class& a, const mpq_class& b);

    std::vector<double> values_;
    std::vector<Equation> equations_;
    std::vector<std::set<std::size_t>> uses_;  ///< [nbUnknowns] waiting equations with the unknown
    std::set<std::pair<std::size_t, std::size_t>> waiting_;  ///< number of terms, equation
    std::vector<Pivot> pivots_;
    std::int64_t work_ = 0;
};

}  // namespace engine
