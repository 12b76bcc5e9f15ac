#include <algorithm>
#include <cmath>

#include "search/local_search.hpp"

namespace engine {

bool LocalSearch::tryChain(const DecisionMove& first, double before) {
    constexpr std::size_t longestChain = 8;
    const Evaluator::Mark start = evaluator_.mark();
    const double sufficient = before - 1e-12 * (1.0 + std::fabs(before));
    chain_.clear();
    chainStart_.clear();
    extendChain(first);
    while (score() >= sufficient && chain_.size() < longestChain && work_ < 2 * workLimit) {
        const auto broken = anyNewlyViolated(start);
        if (!broken) break;
        const auto repair = drawRepair(*broken);
        if (!repair) break;
        extendChain(repair->move);
    }
    if (score() < sufficient || shortenChain(start, sufficient)) return true;
    evaluator_.undoTo(start);
    moved_.clear();
    return false;
}

void LocalSearch::extendChain(const DecisionMove& move) {
    chain_.push_back(move);
    chainStart_.push_back(evaluator_.decisionValue(move.decision));
    apply(move);
}

bool LocalSearch::isInChain(DecisionIndex d) const {
    return std::any_of(chain_.begin(), chain_.end(),
                       [d](const DecisionMove& m) { return m.decision == d; });
}

std::optional<std::size_t> LocalSearch::anyNewlyViolated(const Evaluator::Mark& since) {
    constexpr std::size_t longestScan = 256;
    const auto changes = evaluator_.distancesSince(since);
    if (changes.empty()) return std::nullopt;
    std::size_t k = random_.below(changes.size());
    for (std::size_t n = 0; n < changes.size() && n < longestScan; ++n) {
        const Plan& plan = evaluator_.plan();
        const auto logicIndex = static_cast<std::size_t>(changes[k].logicIndex);
        const std::int32_t entry = plan.entryOf(plan.logic()[logicIndex]);
        const bool held = changes[k].before.toTrue <= 0.0;
        if (entry >= 0 && held && evaluator_.ledger().isViolated(static_cast<std::size_t>(entry))) {
            return static_cast<std::size_t>(entry);
        }
        if (++k == changes.size()) k = 0;
    }
    return std::nullopt;
}

std::optional<LocalSearch::Candidate> LocalSearch::drawRepair(std::size_t entry) {
    constexpr int nbDraws = 8;
    const ExpressionIndex constraint = evaluator_.plan().constraints()[entry];
    std::optional<Candidate> best;
    for (int n = 0; n < nbDraws; ++n) {
        const auto move = walk_.propose(constraint, Goal::ofTruth(true));
        if (!move || isInChain(move->decision)) continue;
        const Evaluator::Mark mark = evaluator_.mark();
        evaluator_.set(move->decision, move->value);
        evaluator_.propagate();
        work_ += evaluator_.valuesSince(mark).size();
        const double after = score();
        evaluator_.undoTo(mark);
        if (!best || after < best->score) best = Candidate{*move, after};
    }
    return best;
}

double LocalSearch::openPartOfWay(const Evaluator::Mark& since) const {
    double part = 1.0;
    for (const Evaluator::DistanceChange& change : evaluator_.distancesSince(since)) {
        const Plan& plan = evaluator_.plan();
        const bool isConstraint =
            plan.entryOf(plan.logic()[static_cast<std::size_t>(change.logicIndex)]) >= 0;
        const double slack = -change.before.margin();
        const double excess = evaluator_.distanceOf(change.logicIndex).margin();
        // Only the oldest record of a constraint shows its slack at the start; later ones show a
        // smaller slack or a violation and are skipped or harmless.
        if (isConstraint && slack >= 0.0 && excess > 0.0) {
            part = std::fmin(part, slack / (slack + excess));
        }
    }
    return part;
}

bool LocalSearch::shortenChain(const Evaluator::Mark& start, double sufficient) {
    const bool allContinuous = std::all_of(chain_.begin(), chain_.end(), [this](const auto& m) {
        return !model_.isDiscrete(m.decision);
    });
    if (!allContinuous) return false;
    const double part = openPartOfWay(start);
    constexpr double shortest = 1e-7;
    if (part < shortest || part >= 1.0) return false;
    for (std::size_t k = 0; k < chain_.size(); ++k) {
        const double from = chainStart_[k].asDouble();
        const double to = chain_[k].value.asDouble();
        evaluator_.set(chain_[k].decision, Value::ofDouble(from + part * (to - from)));
    }
    evaluator_.propagate();
    return score() < sufficient;
}

}  // namespace engine
