#include "search/dive.hpp"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

namespace engine {
namespace {

/// In larger models, or such whose rows share much, a step would take longer than a tick.
constexpr std::size_t mostOperands = 200'000;

/// A dive whose relaxed decisions leave more is given up.
constexpr double hopelessExcess = 1e-2;

std::size_t index(std::int32_t i) {
    return static_cast<std::size_t>(i);
}

}  // namespace

Dive::Dive(const Evaluator& evaluator, const std::vector<Interval>& domain, const ObjectiveCut& cut,
           Random& random)
    : evaluator_(evaluator),
      model_(evaluator.plan().model()),
      domain_(domain),
      cut_(cut),
      random_(random),
      restoration_(model_, domain) {
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) {
        if (domain[index(d)].lower == domain[index(d)].upper) continue;
        (model_.isDiscrete(d) ? wholes_ : floats_).push_back(d);
    }
    isUseful_ = !floats_.empty() && model_.operand.size() <= mostOperands;
}

void Dive::start() {
    constexpr double relaxedShare = 0.5;
    refused_.reset();
    nbRounded_ = 0;
    nbReopenings_ = 0;
    std::vector<DecisionIndex> free = floats_;
    if (random_.chance(relaxedShare)) free.insert(free.end(), wholes_.begin(), wholes_.end());
    restoration_.start(makeStart(), makeRestrictions(), std::move(free));
    isUseful_ = restoration_.size() <= mostOperands;
    isRunning_ = isUseful_;
}

Point Dive::makeStart() {
    const double shares[] = {0.0, 0.0, 0.2, 1.0};
    const double share = shares[random_.below(std::size(shares))];
    Point point;
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) {
        point.push_back(evaluator_.decisionValue(d));
    }
    for (const auto* group : {&floats_, &wholes_}) {
        for (const DecisionIndex d : *group) {
            if (!random_.chance(share)) continue;
            const double x = scattered(d, point[index(d)].asDouble());
            point[index(d)] = model_.isDiscrete(d) ? rounded(d, x) : Value::ofDouble(x);
        }
    }
    return point;
}

double Dive::scattered(DecisionIndex d, double from) {
    const Interval& domain = domain_[index(d)];
    constexpr double wide = 1e6;
    if (domain.upper - domain.lower <= wide) {
        return domain.lower + random_.unit() * (domain.upper - domain.lower);
    }
    const double reach = 10.0 * (1.0 + std::fabs(from));
    return std::clamp(from + reach * (2.0 * random_.unit() - 1.0), domain.lower, domain.upper);
}

std::vector<Restriction> Dive::makeRestrictions() {
    std::vector<Restriction> restrictions = restrictionsAt(evaluator_);
    if (!cut_.isActive()) return restrictions;
    const double relative = std::pow(10.0, -1.0 - 4.0 * random_.unit());
    restrictions.push_back(cut_.restriction(relative));
    return restrictions;
}

bool Dive::advance() {
    if (restoration_.isRunning()) {
        restoration_.advance();
        return false;
    }
    const bool areAllWhole = restoration_.free().size() == floats_.size();
    const bool isHopeless = restoration_.excess() > hopelessExcess;
    if (isHopeless ? roundOtherwise() || reopen() : !areAllWhole && roundNext()) return false;
    isRunning_ = false;
    return areAllWhole;
}

/// Fixes some of the discrete decisions that are free.
bool Dive::roundNext() {
    constexpr std::size_t part = 6;
    before_ = restoration_.point();
    freeBefore_ = restoration_.free();
    const auto nbWholes = freeBefore_.size() - floats_.size();
    std::vector<std::pair<double, DecisionIndex>> byDistance;
    for (std::size_t k = floats_.size(); k < freeBefore_.size(); ++k) {
        const double x = before_[index(freeBefore_[k])].asDouble();
        const double distance = std::fabs(x - std::round(x)) + 0.1 * random_.unit();
        byDistance.emplace_back(distance, freeBefore_[k]);
    }
    std::sort(byDistance.begin(), byDistance.end(), std::greater<>());
    for (std::size_t k = 0; k < nbWholes; ++k) {
        freeBefore_[floats_.size() + k] = byDistance[k].second;
    }
    refused_.reset();
    nbRounded_ = (nbWholes + part - 1) / part;
    roundLast();
    return true;
}

/// Goes back before the last rounding, and rounds fewer, or the last one to its other side.
/// @return false: there is nothing left to try.
bool Dive::roundOtherwise() {
    if (nbRounded_ == 0 || refused_) return false;
    if (nbRounded_ == 1) refused_ = restoration_.point()[index(freeBefore_.back())];
    nbRounded_ = (nbRounded_ + 1) / 2;
    roundLast();
    return true;
}

/// Frees some of the decisions that were rounded.
/// @return false: that was done often enough, or nothing was rounded.
bool Dive::reopen() {
    constexpr int mostReopenings = 10;
    constexpr double share = 0.5;
    if (nbRounded_ == 0 || ++nbReopenings_ > mostReopenings) return false;
    std::vector<unsigned char> isFree(domain_.size(), 0);
    for (const DecisionIndex d : restoration_.free()) isFree[index(d)] = 1;
    std::vector<DecisionIndex> free = floats_;
    for (const DecisionIndex d : wholes_) {
        if (isFree[index(d)] != 0 || random_.chance(share)) free.push_back(d);
    }
    nbRounded_ = 0;
    restoration_.resume(Point(restoration_.point()), std::move(free));
    return true;
}

/// Fixes the last of the decisions that were free before.
void Dive::roundLast() {
    Point point = before_;
    const auto end = freeBefore_.end() - static_cast<std::ptrdiff_t>(nbRounded_);
    for (auto it = end; it != freeBefore_.end(); ++it) {
        Value& value = point[index(*it)];
        value = rounded(*it, value.asDouble());
    }
    restoration_.resume(std::move(point), {freeBefore_.begin(), end});
}

/// One of the two whole numbers around `x`, the nearer the likelier, but not the refused one.
Value Dive::rounded(DecisionIndex d, double x) {
    const double below = std::floor(x);
    double whole = random_.chance(x - below) ? below + 1.0 : below;
    if (refused_) whole = refused_->asDouble() > x ? below : below + 1.0;
    const double inside = std::clamp(whole, domain_[index(d)].lower, domain_[index(d)].upper);
    return Value::ofInt(static_cast<std::int64_t>(inside));
}

}  // namespace engine
