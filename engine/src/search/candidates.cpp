#include <algorithm>
#include <cmath>

#include "search/local_search.hpp"

namespace engine {
std::optional<LocalSearch::Candidate> LocalSearch::drawCandidates(const Wish& wish) {
    constexpr std::size_t manyDraws = 16;
    constexpr std::size_t fewDraws = 3;
    const std::size_t nbDraws =
        random_.chance(strategy_.noiseShare) ? 1 + random_.below(fewDraws) : manyDraws;
    std::optional<Candidate> best;
    for (std::size_t n = 0; n < nbDraws && work_ < workLimit; ++n) {
        const auto move = walk_.propose(wish.expression, wish.goal);
        if (!move) continue;
        tryCandidate(*move, best);
        if (!model_.isDiscrete(move->decision) && n % 4 == 0) {
            tryNeighbours(move->decision, best);
        }
    }
    constexpr double explorationShare = 0.1;
    if (!best || random_.chance(explorationShare)) tryNeighbours(anyDecision(), best);
    return best;
}

void LocalSearch::tryCandidate(const DecisionMove& move, std::optional<Candidate>& best) {
    const Evaluator::Mark mark = evaluator_.mark();
    evaluator_.set(move.decision, move.value);
    evaluator_.propagate();
    work_ += evaluator_.valuesSince(mark).size();
    const double after = score();
    const bool solvesAll = evaluator_.ledger().violated().empty() && after <= 0.0;
    evaluator_.undoTo(mark);
    if (isTabu(move) && !solvesAll) return;
    if (!best || after < best->score) best = Candidate{move, after};
}

void LocalSearch::tryNeighbours(DecisionIndex d, std::optional<Candidate>& best) {
    const double current = evaluator_.decisionValue(d).asDouble();
    const auto tryValue = [&](double number) {
        const Value value = walk_.valueInDomain(d, number, 0);
        if (value.asDouble() == current) return;
        tryCandidate({d, value}, best);
    };
    if (model_.isDiscrete(d)) {
        const double step = std::round(std::exp2(4.0 * random_.unit() * random_.unit()));
        tryValue(current + step);
        tryValue(current - step);
        return;
    }
    const double scoreHere = score();
    double& step = stepSize_[static_cast<std::size_t>(d)];
    double scores[2] = {scoreHere, scoreHere};
    for (const int side : {0, 1}) {
        std::optional<Candidate> tried;
        const Value value = walk_.valueInDomain(d, side == 0 ? current - step : current + step, 0);
        if (value.asDouble() != current) tryCandidate({d, value}, tried);
        if (!tried) continue;
        scores[side] = tried->score;
        if (!best || tried->score < best->score) best = tried;
    }
    // The vertex of the parabola through the three points.
    const double curvature = scores[1] - 2.0 * scoreHere + scores[0];
    if (curvature > 0.0) tryValue(current - 0.5 * step * (scores[1] - scores[0]) / curvature);
    adaptStep(d, std::fmin(scores[0], scores[1]) < scoreHere);
}

void LocalSearch::adaptStep(DecisionIndex d, bool success) {
    double& step = stepSize_[static_cast<std::size_t>(d)];
    const double size = 1.0 + std::fabs(evaluator_.decisionValue(d).asDouble());
    const Interval& domain = domain_[static_cast<std::size_t>(d)];
    step *= success ? 2.0 : 0.5;
    constexpr double finest = 1e-8;
    // Too fine to matter: start again with a coarse one.
    if (step < finest * size) step = 0.1 * size;
    step = std::fmin(step, 0.5 * (domain.upper - domain.lower));
}

DecisionIndex LocalSearch::anyDecision() {
    return movable_[random_.below(movable_.size())];
}

bool LocalSearch::isTabu(const DecisionMove& move) const {
    return tabuUntil_[static_cast<std::size_t>(move.decision)] > statistics_.iterations;
}

}  // namespace engine
