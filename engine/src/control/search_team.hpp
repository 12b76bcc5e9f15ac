#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "control/parameters.hpp"
#include "control/solution.hpp"
#include "control/statistics.hpp"
#include "search/searcher.hpp"

namespace engine {

/// One searcher a worker, each with a seed of its own. Between rounds, in the order of the workers,
/// the best point is shared. So the same seed, number of threads and rounds give the same points.
class SearchTeam {
public:
    /// @param domain  [nbDecisions] the moves stay inside; none empty.
    SearchTeam(const ClosedModel& model, const Parameters& parameters, std::vector<Interval> domain,
               int nbWorkers);

    // In worker `k`, while the solve thread touches nothing here:
    /// Makes the searcher and starts it from `start`.
    void create(int k, const Point& start);
    /// First takes over the shared point when it is another searcher's, then spends `work`.
    void run(int k, std::int64_t work, const std::atomic<bool>& halt, const Incumbent& shared);

    // On the solve thread, while the workers rest:
    /// Puts the best point into `solution` if it is better. @return whether it was.
    bool share(Solution& solution);
    /// Has every searcher stay inside `domain` [nbDecisions], none empty.
    void tighten(const std::vector<Interval>& domain);
    /// Has every searcher take over the current point before its next move.
    void spread();
    /// Adds the moves since the last call. @return the work since then.
    std::int64_t addTo(Statistics& statistics);

private:
    const ClosedModel& model_;
    const Parameters& parameters_;
    std::vector<Interval> domain_;
    std::vector<std::unique_ptr<Searcher>> searchers_;  ///< [nbWorkers]
    std::vector<char> mustAdopt_;                       ///< [nbWorkers]
    SearchStatistics counted_;                          ///< already added
};

}  // namespace engine
