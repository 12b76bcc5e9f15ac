#include "model/implied_bounds.hpp"

#include <algorithm>
#include <cmath>

namespace norv {

namespace {

constexpr std::int32_t mostRounds = 10;

/// What rounding may take from a bound, relative to the numbers that it is computed from.
constexpr double roundingSlack = 1e-9;

/// The least that a sum of terms can be, with the terms that have no least value counted apart.
struct LeastActivity {
    double finitePart = 0.0;
    std::int64_t nbInfinite = 0;

    void add(double term) {
        if (std::isinf(term)) {
            ++nbInfinite;
        } else {
            finitePart += term;
        }
    }
    /// Is the rest finite when `term`, one of those added, is left out?
    [[nodiscard]] bool isFiniteWithout(double term) const {
        return nbInfinite == (std::isinf(term) ? 1 : 0);
    }
    [[nodiscard]] double without(double term) const {
        return std::isinf(term) ? finitePart : finitePart - term;
    }
};

class Propagation {
public:
    explicit Propagation(const Instance& source) : instance_(source) {
        bounds_.lower = instance_.variables.lower;
        bounds_.upper = instance_.variables.upper;
        for (std::int32_t j = 0; j < instance_.nbVariables(); ++j) {
            const std::int32_t type = instance_.variables.types[j];
            if (type != hostapi::variable_type::semiContinuous &&
                type != hostapi::variable_type::semiInteger)
                continue;
            bounds_.lower[j] = std::min(bounds_.lower[j], 0.0);
            bounds_.upper[j] = std::max(bounds_.upper[j], 0.0);
        }
    }

    ImpliedBounds run() {
        bool hasNewBound = true;
        for (std::int32_t round = 0; hasNewBound && round < mostRounds; ++round) {
            hasNewBound = false;
            for (std::int32_t i = 0; i < instance_.nbRows(); ++i) {
                if (!isLinear(i)) continue;
                const std::int32_t type = instance_.rows.types[i];
                const bool isEquality = type == hostapi::equation_type::equality;
                if (isEquality || type == hostapi::equation_type::less)
                    hasNewBound |= useRow(i, /*direction=*/1.0);
                if (isEquality || type == hostapi::equation_type::greater)
                    hasNewBound |= useRow(i, /*direction=*/-1.0);
            }
        }
        return std::move(bounds_);
    }

private:
    bool isLinear(std::int32_t row) const {
        const SparseRows& entries = instance_.entries;
        return std::all_of(entries.occurrences.begin() + entries.starts[row],
                           entries.occurrences.begin() + entries.starts[row + 1],
                           [](Occurrence each) { return each == linearOnly; }) &&
               instance_.listOf(row) == nullptr;
    }

    double leastOf(std::int32_t variable, double coefficient) const {
        return coefficient *
               (coefficient > 0.0 ? bounds_.lower[variable] : bounds_.upper[variable]);
    }

    /// direction * (function of the row) <= direction * right-hand side.
    /// @return whether a variable without a bound got one.
    bool useRow(std::int32_t row, double direction) {
        const SparseRows& entries = instance_.entries;
        const double side = direction * instance_.rows.rightHandSides[row];
        LeastActivity least;
        for (std::int64_t k = entries.starts[row]; k < entries.starts[row + 1]; ++k)
            least.add(leastOf(entries.variables[k], direction * entries.values[k]));
        if (least.nbInfinite > 1) return false;
        bool hasNewBound = false;
        for (std::int64_t k = entries.starts[row]; k < entries.starts[row + 1]; ++k) {
            const std::int32_t j = entries.variables[k];
            const double coefficient = direction * entries.values[k];
            // An entry changes the other bound of its variable alone, so `least` stays exact.
            const double term = leastOf(j, coefficient);
            if (!least.isFiniteWithout(term)) continue;
            const double size = std::max({1.0, std::fabs(side), std::fabs(least.finitePart),
                                          std::isinf(term) ? 0.0 : std::fabs(term)});
            hasNewBound |= take(j, coefficient, side - least.without(term), roundingSlack * size);
        }
        return hasNewBound;
    }

    /// coefficient * variable <= side, up to the slack.
    bool take(std::int32_t variable, double coefficient, double side, double slack) {
        const double limit =
            side / coefficient + std::copysign(slack / std::fabs(coefficient), coefficient);
        if (!std::isfinite(limit)) return false;
        double& bound = coefficient > 0.0 ? bounds_.upper[variable] : bounds_.lower[variable];
        const bool isNew = std::isinf(bound);
        bound = coefficient > 0.0 ? std::min(bound, limit) : std::max(bound, limit);
        return isNew;
    }

    const Instance& instance_;
    ImpliedBounds bounds_;
};

}  // namespace

ImpliedBounds impliedBounds(const Instance& instance) {
    return Propagation(instance).run();
}

}  // namespace norv
