#include <algorithm>
#include <cmath>

#include "search/exponential.hpp"
#include "search/local_search.hpp"

namespace engine {
namespace {

constexpr double largestWeight = 1e9;

}  // namespace

void LocalSearch::raiseWeights() {
    constexpr std::size_t most = 100;
    constexpr std::int64_t longInfeasible = 100;
    const auto grown = [this](double weight) { return weight * strategy_.weightGrowth + 1.0; };
    ViolationLedger& ledger = evaluator_.ledger();
    const auto& violated = ledger.violated();
    double largest = 0.0;
    if (violated.empty()) {
        cut_.setWeight(grown(cut_.weight()));
        largest = cut_.weight();
    }
    for (std::size_t n = 0; n < violated.size() && n < most; ++n) {
        const std::size_t i =
            violated.size() <= most ? violated[n] : violated[random_.below(violated.size())];
        ledger.setWeight(i, grown(ledger.weightOf(i)));
        largest = std::fmax(largest, ledger.weightOf(i));
    }
    if (sinceFeasible_ > longInfeasible) {
        constexpr double decay = 0.98;
        cut_.setWeight(cut_.weight() * decay);
    }
    if (largest > largestWeight) rescaleWeights();
}

void LocalSearch::rescaleWeights() {
    const auto reduced = [](double weight) {
        return std::fmax(weight / largestWeight, 1.0 / largestWeight);
    };
    ViolationLedger& ledger = evaluator_.ledger();
    for (std::size_t i = 0; i < ledger.nbEntries(); ++i) {
        ledger.setWeight(i, reduced(ledger.weightOf(i)));
    }
    ledger.refresh();
    cut_.setWeight(reduced(cut_.weight()));
}

void LocalSearch::chooseStrategy() {
    strategy_.weightGrowth = random_.chance(0.5) ? 1.0 : 1.1;
    strategy_.noiseShare = random_.chance(0.5) ? 0.0 : 0.2;
    const double lossPerLevel = random_.chance(0.5) ? 0.0 : 0.01;
    strategy_.lossShare = lossPerLevel * settings_.annealingLevel;
}

void LocalSearch::resetWeights() {
    ViolationLedger& ledger = evaluator_.ledger();
    for (std::size_t i = 0; i < ledger.nbEntries(); ++i) ledger.setWeight(i, 1.0);
    ledger.refresh();
    cut_.setWeight(1.0);
}

void LocalSearch::restart() {
    best_.confirm();
    moveTo(best_.incumbent().point);
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) best_.noteMoved(d);
    resetWeights();
    cut_.activateNextLevel();
    cut_.setAmbition(powerOfTen(-1.0 - 5.0 * random_.unit()));
    chooseStrategy();
    shake();
    sinceProgress_ = 0;
    sinceFeasible_ = 0;
}

void LocalSearch::shake() {
    const std::size_t most = std::clamp<std::size_t>(movable_.size() / 10, 2, 50);
    for (std::size_t n = 1 + random_.below(most); n > 0; --n) apply(randomMove(anyDecision()));
    moved_.clear();
    evaluator_.commit();
}

DecisionMove LocalSearch::randomMove(DecisionIndex d) {
    const Interval& domain = domain_[static_cast<std::size_t>(d)];
    const double current = evaluator_.decisionValue(d).asDouble();
    // Steps of every order of magnitude up to the domain's width.
    const double width = std::fmin(domain.upper - domain.lower, 10.0 * (1.0 + std::fabs(current)));
    const double step = width * powerOfTen(-3.0 * random_.unit());
    const bool up = random_.chance(0.5);
    return {d, walk_.valueInDomain(d, up ? current + step : current - step, 0)};
}

}  // namespace engine
