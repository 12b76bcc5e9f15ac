#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "back_ends/exact_back_end.hpp"
#include "operators/range.hpp"

namespace engine {

/// Which numbers may be put to Cbc and Clp: they take sides and bounds from 1e20, 1e27 or 1e30 on
/// for none, one place another than the next, drop coefficients below 1e-20, and assert that costs
/// stay below 1e25 once they are scaled.
class CbcRange {
public:
    /// Numbers from here on stand for none.
    static constexpr double largest = 1e20;
    /// Coefficients below this are dropped.
    static constexpr double smallest = 1e-20;

    static bool holds(const ExactProblem& problem, double tolerance) {
        const auto isCost = [](double c) { return std::fabs(c) < largest; };
        const auto isSide = [](double s) { return std::fabs(s) < largest || std::isinf(s); };
        const auto all = [](const std::vector<double>& values, auto holdsFor) {
            return std::all_of(values.begin(), values.end(), holdsFor);
        };
        return all(problem.cost, isCost) && all(problem.lower, isSide) &&
               all(problem.upper, isSide) && all(problem.rowLower, isSide) &&
               all(problem.rowUpper, isSide) && all(problem.model.coefficient, isCost) &&
               dropsNothing(problem, tolerance);
    }

    /// Takes away sides out of range that their rows cannot reach within the bounds.
    static void dropUnreachableSides(ExactProblem& problem) {
        const LinearModel& m = problem.model;
        for (std::size_t i = 0; i < m.nbRows(); ++i) {
            double& lower = problem.rowLower[i];
            double& upper = problem.rowUpper[i];
            if (!(std::fabs(lower) >= largest) && !(std::fabs(upper) >= largest)) continue;
            double reach = 0.0;
            for (auto k = m.rowStart[i]; k < m.rowStart[i + 1]; ++k) {
                const auto entry = static_cast<std::size_t>(k);
                const auto j = static_cast<std::size_t>(m.column[entry]);
                reach += std::fabs(m.coefficient[entry]) * boundOf(problem, j);
            }
            if (lower <= -largest && reach < -0.5 * lower) lower = -infinity;
            if (upper >= largest && reach < 0.5 * upper) upper = infinity;
        }
    }

    /// Whether presolve, scaling and the tree's cuts may be let loose: what they derive from the
    /// numbers (a cost substituted through a row, say) stays in range too. They assert it.
    static bool isCalm(const ExactProblem& problem) {
        double smallestEntry = 1.0;
        double largestEntry = 1.0;
        for (const double c : problem.model.coefficient) {
            if (c == 0.0 || std::fabs(c) < smallest) continue;
            smallestEntry = std::fmin(smallestEntry, std::fabs(c));
            largestEntry = std::fmax(largestEntry, std::fabs(c));
        }
        double largestSide = 1.0;
        for (const auto* values : {&problem.cost, &problem.lower, &problem.upper, &problem.rowLower,
                                   &problem.rowUpper}) {
            for (const double v : *values) {
                if (std::isfinite(v)) largestSide = std::fmax(largestSide, std::fabs(v));
            }
        }
        return largestSide * (largestEntry / smallestEntry) < largest;
    }

private:
    static double boundOf(const ExactProblem& problem, std::size_t j) {
        return std::fmax(std::fabs(problem.lower[j]), std::fabs(problem.upper[j]));
    }
    /// No term whose coefficient is dropped can be as large as the tolerance.
    static bool dropsNothing(const ExactProblem& problem, double tolerance) {
        const LinearModel& m = problem.model;
        for (std::size_t k = 0; k < m.coefficient.size(); ++k) {
            const auto j = static_cast<std::size_t>(m.column[k]);
            const double c = std::fabs(m.coefficient[k]);
            if (c != 0.0 && c < smallest && !(c * boundOf(problem, j) < tolerance)) return false;
        }
        return true;
    }
};

}  // namespace engine
