#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "evaluate/incumbent.hpp"
#include "model/closed_model.hpp"

namespace engine {

struct SearchSettings {
    std::uint64_t seed = 0;  ///< different for every thread
    int annealingLevel = 1;  ///< 0 (descent) to 9
};

/// Counters of one searcher, all from its creation.
struct SearchStatistics {
    std::int64_t work = 0;  ///< operand visits of spend()
    std::int64_t iterations = 0;
    std::int64_t accepted = 0;
    std::int64_t improving = 0;
};

/// One thread's local search: weighted constraint violation and objectives, incremental
/// evaluation, its own generator. Deterministic: the same calls give the same points.
///
/// Owned and used by one worker thread at a time; reads the model only.
class Searcher {
public:
    /// @param domain  [nbDecisions] moves stay inside; tightened bounds welcome, none empty.
    Searcher(const ClosedModel& model, std::vector<Interval> domain, SearchSettings settings);
    ~Searcher();
    Searcher(const Searcher&) = delete;
    Searcher& operator=(const Searcher&) = delete;

    /// Restarts from `point` (moved into the domain) and makes it the best point if it is better.
    void startFrom(const Point& point);

    /// Runs `nbIterations` moves, fewer only when `stop` becomes true. Work per iteration is
    /// bounded, so that a call of some hundred iterations ends within milliseconds.
    void run(std::int64_t nbIterations, const std::atomic<bool>& stop);

    /// Runs moves until `work` operand visits are spent, fewer only when `stop` becomes true. What
    /// the last move takes beyond them is owed, and taken from the next call's: so that the work
    /// counts exactly as it was granted.
    void spend(std::int64_t work, const std::atomic<bool>& stop);

    [[nodiscard]] const Incumbent& best() const;
    /// Stays inside `domain` [nbDecisions], none empty, from now on; wider than known is ignored.
    void tighten(const std::vector<Interval>& domain);
    /// Takes over a better point found by another searcher.
    void adopt(const Incumbent& incumbent);
    [[nodiscard]] const SearchStatistics& statistics() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace engine
