#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "model/closed_model.hpp"
#include "prove/incumbent.hpp"
#include "prove/pace.hpp"

namespace engine {

/// How far proving may go. Deterministic effort decides; the clock only through `shouldStop`.
struct ProveLimits {
    std::int64_t iterations;  ///< budget of nodes and pivots together
    int seed;
    /// Asked at least ten times a second; true ends proving early. Thread: the caller's.
    std::function<bool()> shouldStop;
    /// False leaves the exact back end out: measures the search alone.
    bool useExactBackEnd = true;
};

/// What kind of proof is under way; decides how much of the work it gets.
enum class ProofKind { Other, LinearProgram, Tree };

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

/// All proofs of one solve, from the first to the last:
/// interval propagation, trivial optima, exhaustion of small discrete spaces and, when built in,
/// the exact back end for linear and convex models, in this order. `start` is the starting point.
///
/// Inconsistent only with a proof, optimal only with a proof (objectives compared lexicographically
/// when there are several).
class Proof {
public:
    /// @param model  outlives this.
    /// @param start  the starting point.
    Proof(const ClosedModel& model, Point start, int seed, bool useExactBackEnd = true);
    ~Proof();
    Proof(const Proof&) = delete;
    Proof& operator=(const Proof&) = delete;

    /// Once. The rest is for while the pace holds it, or when it has ended.
    void run(Pace& pace);

    /// Kept if it is feasible and better than the best point so far.
    void offer(const Point& point);
    [[nodiscard]] const ProvedIncumbent& incumbent() const;
    [[nodiscard]] Preparation::Outcome outcome() const;
    [[nodiscard]] const std::string& text() const;  ///< one line: what proved it, empty when open
    /// [nbDecisions] tightened by propagation; empty before.
    [[nodiscard]] const std::vector<Interval>& domain() const;
    /// [nbObjectives] no feasible point is better in the objective; empty before propagation.
    [[nodiscard]] const std::vector<double>& objectiveBound() const;
    [[nodiscard]] ProofKind kind() const;

private:
    class Course;
    std::unique_ptr<Course> course_;
};

/// One proof within limits, in one go.
Preparation prepare(const ClosedModel& model, const Point& start, const ProveLimits& limits);

/// Interval propagation alone, run at close: false when it proves the model inconsistent.
/// @param domain  [nbDecisions], tightened in place.
bool propagateDomains(const ClosedModel& model, std::vector<Interval>& domain);

/// Names of the back ends built in, for the information text; empty without.
std::string backEndNames();

}  // namespace engine
