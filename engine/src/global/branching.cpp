#include "global/branching.hpp"

#include <algorithm>
#include <cmath>

namespace engine {
namespace {

using Kind = Definition::Kind;

/// Levels this near to an integer are one.
constexpr double integrality = 1e-6;
/// Definitions missed by less say nothing.
constexpr double leastMiss = 1e-9;
/// Relative to the bounds' size: narrower reals are not split any more.
constexpr double leastWidth = 1e-9;
/// Share of the level in the point of a split; the rest is the middle's.
constexpr double shareOfLevel = 0.7;
/// A split leaves each side at least this part of the width.
constexpr double leastPart = 0.15;
/// So many splits tell what a column is good for.
constexpr double enoughSplits = 4.0;
/// Trials at a box, and trials in a row without a better column.
constexpr int mostTrials = 16;
constexpr int mostVainTrials = 6;
/// A part that seems to be empty gains this many times the mean.
constexpr double gainOfEmpty = 20.0;

}  // namespace

Branching::Branching(const Relaxation& relaxation)
    : relaxation_(relaxation),
      lower_(relaxation.rows().nbColumns()),
      upper_(relaxation.rows().nbColumns()),
      blame_(relaxation.rows().nbColumns(), 0.0) {}

bool Branching::isInteger(std::int32_t column) const {
    return relaxation_.rows().isInteger[static_cast<std::size_t>(column)] != 0;
}

bool Branching::canSplit(std::int32_t column) const {
    if (!relaxation_.canLimit(column)) return false;
    const Range r = relaxation_.rangeOf(column);
    if (isInteger(column)) return r.upper - r.lower >= 1.0;
    // Halves of an endless range of a part may go on for ever without narrowing a decision.
    const bool isDecision = relaxation_.rows().decision[static_cast<std::size_t>(column)] >= 0;
    if (!isDecision && std::isinf(r.upper - r.lower)) return false;
    const double size = std::max(1.0, std::min(std::fabs(r.lower), std::fabs(r.upper)));
    return r.upper - r.lower > leastWidth * size;
}

void Branching::addFractional(std::span<const double> levels,
                              std::vector<Candidate>& candidates) const {
    for (std::size_t j = 0; j < levels.size(); ++j) {
        const auto column = static_cast<std::int32_t>(j);
        if (!isInteger(column) || !canSplit(column)) continue;
        const double fraction = levels[j] - std::floor(levels[j]);
        if (fraction < integrality || fraction > 1.0 - integrality) continue;
        candidates.push_back({column, fraction, 1.0 - fraction});
    }
}

void Branching::blame(std::int32_t column, double miss) {
    if (column == noColumn || !canSplit(column)) return;
    double& total = blame_[static_cast<std::size_t>(column)];
    if (total == 0.0) blamed_.push_back(column);
    total += miss;
}

void Branching::addMissing(std::span<const double> levels, std::span<const double> weights,
                           std::vector<Candidate>& candidates) {
    const std::vector<Definition>& definitions = relaxation_.factorable().definition;
    for (std::size_t k = 0; k < definitions.size(); ++k) {
        const Definition& definition = definitions[k];
        double miss = relaxation_.missOf(definition, levels);
        if (!(miss > leastMiss)) continue;
        miss = std::min(miss, 1e6) * weights[k];
        const bool isTruth = definition.kind == Kind::AtMost || definition.kind == Kind::IsZero;
        blame(definition.first, miss);
        blame(definition.second, miss);
        if (isTruth) blame(definition.result, miss);
        if (definition.kind == Kind::Curve || definition.kind == Kind::Product) continue;
        for (const LinearForm& form : definition.forms) {
            for (const std::int32_t column : form.column) blame(column, 0.1 * miss);
        }
    }
    for (const std::int32_t column : blamed_) {
        double& total = blame_[static_cast<std::size_t>(column)];
        candidates.push_back({column, total, total});
        total = 0.0;
    }
    blamed_.clear();
}

double Branching::estimate(std::int32_t column, bool isUpper, double distance) const {
    const Gain& own = (isUpper ? upper_ : lower_)[static_cast<std::size_t>(column)];
    const double mean = all_.nb > 0.0 ? all_.sum / all_.nb : 1.0;
    // What is known of all columns counts as one experience.
    return std::max(distance * (own.sum + mean) / (own.nb + 1.0), 1e-12 * distance);
}

BranchPoint Branching::splitAt(const Candidate& candidate, double level) const {
    const Range r = relaxation_.rangeOf(candidate.column);
    BranchPoint split{candidate.column, 0.0, 0.0, candidate.lowerDistance, candidate.upperDistance};
    level = std::clamp(level, r.lower, r.upper);
    const double width = r.upper - r.lower;
    const double size = std::max(1.0, std::fabs(level));
    double point = level;
    if (width < 1e4 * size) {
        point = shareOfLevel * level + (1.0 - shareOfLevel) * 0.5 * (r.lower + r.upper);
        point = std::clamp(point, r.lower + leastPart * width, r.upper - leastPart * width);
    } else if (level - r.lower < 1e-3 * size) {
        // Of a wide range, a piece about as large as its numbers are.
        point = level + size;
    } else if (r.upper - level < 1e-3 * size) {
        point = level - size;
    }
    if (isInteger(candidate.column)) {
        const bool isFractional = std::fabs(level - std::round(level)) > integrality;
        split.point = std::floor(isFractional ? level : point);
        split.point = std::clamp(split.point, r.lower, r.upper - 1.0);
        split.next = split.point + 1.0;
    } else {
        split.point = split.next = point;
    }
    return split;
}

std::optional<BranchPoint> Branching::choose(std::span<const double> levels,
                                             std::span<const double> weights, const Trial& trial) {
    std::vector<Candidate> candidates;
    addFractional(levels, candidates);
    if (candidates.empty()) addMissing(levels, weights, candidates);
    if (candidates.empty()) return chooseWidest();
    for (Candidate& c : candidates) c.score = scoreOf(c);
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate& a, const Candidate& b) { return a.score > b.score; });
    if (isInteger(candidates.front().column)) tryOut(levels, trial, candidates);
    const auto chosen =
        std::max_element(candidates.begin(), candidates.end(),
                         [](const Candidate& a, const Candidate& b) { return a.score < b.score; });
    return splitAt(*chosen, levels[static_cast<std::size_t>(chosen->column)]);
}

double Branching::scoreOf(const Candidate& c) const {
    return estimate(c.column, /*isUpper=*/false, c.lowerDistance) *
           estimate(c.column, /*isUpper=*/true, c.upperDistance);
}

bool Branching::isReliable(std::int32_t column) const {
    const auto j = static_cast<std::size_t>(column);
    return std::min(lower_[j].nb, upper_[j].nb) >= enoughSplits;
}

/// The scores of the most promising candidates become those of trials.
void Branching::tryOut(std::span<const double> levels, const Trial& trial,
                       std::vector<Candidate>& candidates) {
    double best = 0.0;
    int nbTrials = 0;
    int nbVain = 0;
    for (Candidate& c : candidates) {
        if (nbTrials >= mostTrials || nbVain >= mostVainTrials) break;
        if (!isInteger(c.column) || isReliable(c.column)) {
            best = std::max(best, c.score);
            continue;
        }
        const auto found = trial(splitAt(c, levels[static_cast<std::size_t>(c.column)]));
        if (!found) break;
        const double mean = all_.nb > 0.0 ? all_.sum / all_.nb : 1.0;
        double gain[2] = {found->below, found->above};
        for (const bool isUpper : {false, true}) {
            double& g = gain[isUpper ? 1 : 0];
            const double distance = isUpper ? c.upperDistance : c.lowerDistance;
            learn({c.column, isUpper, distance}, g);
            if (std::isinf(g)) g = gainOfEmpty * mean;
            g = std::max(g, 1e-12 * distance);
        }
        c.score = gain[0] * gain[1];
        ++nbTrials;
        nbVain = c.score > best ? 0 : nbVain + 1;
        best = std::max(best, c.score);
    }
}

std::optional<BranchPoint> Branching::chooseWidest() const {
    double widest = 0.0;
    std::optional<BranchPoint> chosen;
    for (std::size_t j = 0; j < lower_.size(); ++j) {
        const auto column = static_cast<std::int32_t>(j);
        const bool isDecision = relaxation_.rows().decision[j] >= 0;
        if ((!isDecision && !isInteger(column)) || !canSplit(column)) continue;
        const Range r = relaxation_.rangeOf(column);
        const double size = std::max({1.0, std::fabs(r.lower), std::fabs(r.upper)});
        const double width = std::isinf(r.upper - r.lower) ? 2.0 : (r.upper - r.lower) / size;
        if (width <= widest) continue;
        widest = width;
        const double middle = std::isinf(r.upper - r.lower) ? std::clamp(0.0, r.lower, r.upper)
                                                            : 0.5 * (r.lower + r.upper);
        chosen = splitAt({column, 1.0, 1.0}, middle);
    }
    return chosen;
}

void Branching::learn(const Split& split, double gain) {
    if (split.column == noColumn || !(split.distance > 0.0) || !std::isfinite(gain)) return;
    const double rate = std::max(0.0, gain) / split.distance;
    Gain& own = (split.isUpper ? upper_ : lower_)[static_cast<std::size_t>(split.column)];
    own.sum += rate;
    own.nb += 1.0;
    all_.sum += rate;
    all_.nb += 1.0;
}

}  // namespace engine
