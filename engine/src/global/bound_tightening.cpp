#include "global/bound_tightening.hpp"

#include <algorithm>
#include <cmath>

#include "global/safe_bound.hpp"

namespace engine {
namespace {

constexpr int mostRounds = 3;
constexpr int mostPivots = 2'000;
/// A bound is reached where a level is this near, relative to the width.
constexpr double reached = 1e-3;
/// A range is better when it has lost this part of its width.
constexpr double leastGain = 0.05;

class Tightening {
public:
    Tightening(Relaxation& relaxation, SimplexSolver& simplex, Pace& pace)
        : relaxation_(relaxation), simplex_(simplex), pace_(pace) {
        for (const Definition& definition : relaxation.factorable().definition) {
            for (const std::int32_t column : {definition.first, definition.second}) {
                if (column != noColumn && relaxation.canLimit(column)) columns_.push_back(column);
            }
        }
        std::sort(columns_.begin(), columns_.end());
        columns_.erase(std::unique(columns_.begin(), columns_.end()), columns_.end());
    }

    /// One round over all columns. @return what was found.
    std::vector<ValueLimit> round();

private:
    void narrow(std::int32_t column, bool isUpper);
    void note(const std::vector<double>& levels);

    Relaxation& relaxation_;
    SimplexSolver& simplex_;
    Pace& pace_;
    std::vector<std::int32_t> columns_;  ///< ascending
    std::vector<unsigned char> isReached_[2];
    std::vector<double> cost_;
    std::vector<ValueLimit> found_;
};

/// Which bounds need no solve, since `levels` have them.
void Tightening::note(const std::vector<double>& levels) {
    for (std::size_t k = 0; k < columns_.size(); ++k) {
        const Range r = relaxation_.rangeOf(columns_[k]);
        const double level = levels[static_cast<std::size_t>(columns_[k])];
        if (std::isinf(r.upper - r.lower)) continue;
        const double near = reached * (r.upper - r.lower);
        if (level - r.lower <= near) isReached_[0][k] = 1;
        if (r.upper - level <= near) isReached_[1][k] = 1;
    }
}

void Tightening::narrow(std::int32_t column, bool isUpper) {
    const auto j = static_cast<std::size_t>(column);
    const LinearModel& rows = relaxation_.rows();
    cost_[j] = isUpper ? -1.0 : 1.0;
    simplex_.setCost(cost_);
    const SimplexSolver::Status status = simplex_.solve(pace_, mostPivots);
    if (status == SimplexSolver::Status::Optimal) {
        note(simplex_.levels());
        const double bound = safeBoundOf(rows, cost_, {rows.lower, rows.upper},
                                         simplex_.multipliers(), RowSides::Relaxed)
                                 .lower;
        const Range r = relaxation_.rangeOf(column);
        const double width = r.upper - r.lower;
        const double gain = isUpper ? r.upper + bound : bound - r.lower;
        if (std::isfinite(bound) && (std::isinf(gain) || gain > leastGain * width)) {
            const ColumnOrigin& origin = relaxation_.factorable().origin[j];
            found_.push_back(
                limitOf(origin, isUpper ? r.lower : bound, isUpper ? -bound : r.upper));
        }
    }
    cost_[j] = 0.0;
}

std::vector<ValueLimit> Tightening::round() {
    found_.clear();
    cost_.assign(relaxation_.rows().nbColumns(), 0.0);
    for (auto& flags : isReached_) flags.assign(columns_.size(), 0);
    simplex_.load(relaxation_.rows(), cost_, {});
    if (simplex_.solve(pace_, 100 * mostPivots) != SimplexSolver::Status::Optimal) return {};
    note(simplex_.levels());
    for (std::size_t k = 0; k < columns_.size(); ++k) {
        const Range r = relaxation_.rangeOf(columns_[k]);
        if (!(r.upper - r.lower > 1e-6)) continue;
        for (const bool isUpper : {false, true}) {
            if (isReached_[isUpper ? 1 : 0][k] != 0 || pace_.mustEnd()) continue;
            narrow(columns_[k], isUpper);
        }
    }
    return found_;
}

}  // namespace

ValueLimit limitOf(const ColumnOrigin& origin, double lower, double upper) {
    const double a = (lower - origin.offset) / origin.scale;
    const double b = (upper - origin.offset) / origin.scale;
    if (origin.scale == 1.0 && origin.offset == 0.0) return {origin.expression, lower, upper};
    const Range r = widened({std::min(a, b), std::max(a, b), false}, 3.0);
    return {origin.expression, r.lower, r.upper};
}

bool tightenByOptimisation(Relaxation& relaxation, SimplexSolver& simplex, Pace& pace,
                           Propagator& propagator, std::int64_t propagationWork,
                           std::span<const ValueLimit> cutoff) {
    if (!propagator.restrictAll(cutoff, propagationWork) || !relaxation.refresh()) return false;
    Tightening tightening(relaxation, simplex, pace);
    for (int round = 0; round < mostRounds && !pace.mustEnd(); ++round) {
        const std::vector<ValueLimit> found = tightening.round();
        if (found.empty()) return true;
        if (!propagator.restrictAll(found, propagationWork) || !relaxation.refresh()) return false;
    }
    return true;
}

}  // namespace engine
