#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "model/closed_model.hpp"

namespace engine {

/// How far proving may go. Deterministic effort decides; the clock only through `shouldStop`.
struct ProveLimits {
    std::int64_t iterations;  ///< budget of moves, nodes and pivots together
    int seed;
    /// Asked at least ten times a second; true ends proving early. Thread: the caller's.
    std::function<bool()> shouldStop;
    /// False leaves the exact back end out: measures the search alone.
    bool useExactBackEnd = true;
    /// How often proving was tried before with a smaller budget: each attempt takes another path.
    int attempt = 0;
};

/// Outcome of proving.
struct Preparation {
    enum class Outcome { Open, Inconsistent, Optimal };
    Outcome outcome = Outcome::Open;
    std::vector<Interval> domain;  ///< [nbDecisions] tightened; every feasible point lies inside
    bool hasPoint = false;
    Point point;                  ///< judged feasible when hasPoint; optimal with Outcome::Optimal
    std::int64_t iterations = 0;  ///< used of the budget
    std::string proof;            ///< one line: what proved it, empty when open
};

/// Interval propagation, trivial optima, exhaustion of small discrete spaces and, when built in,
/// the exact back end for linear and convex models, in this order. `start` is the starting point.
///
/// Inconsistent only with a proof, optimal only with a proof (objectives compared lexicographically
/// when there are several).
Preparation prepare(const ClosedModel& model, const Point& start, const ProveLimits& limits);

/// Interval propagation alone, run at close: false when it proves the model inconsistent.
/// @param domain  [nbDecisions], tightened in place.
bool propagateDomains(const ClosedModel& model, std::vector<Interval>& domain);

/// Names of the exact back ends built in, for the information text; empty without.
std::string backEndNames();

}  // namespace engine
