#include "control/search_team.hpp"

#include <algorithm>
#include <utility>

namespace engine {

namespace {

/// Spreads consecutive seeds over 64 bits (the finaliser of Steele, Lea and Flood, "Fast splittable
/// pseudorandom number generators", OOPSLA 2014), so that no two searchers share a stream.
std::uint64_t seedOf(int seed, int worker) {
    std::uint64_t z =
        (static_cast<std::uint64_t>(seed) << 32U) + static_cast<std::uint64_t>(worker);
    z += 0x9e3779b97f4a7c15U;
    z = (z ^ (z >> 30U)) * 0xbf58476d1ce4e5b9U;
    z = (z ^ (z >> 27U)) * 0x94d049bb133111ebU;
    return z ^ (z >> 31U);
}

}  // namespace

SearchTeam::SearchTeam(const ClosedModel& model, const Parameters& parameters,
                       std::vector<Interval> domain, int nbWorkers)
    : model_(model),
      parameters_(parameters),
      domain_(std::move(domain)),
      searchers_(static_cast<std::size_t>(nbWorkers)),
      mustAdopt_(static_cast<std::size_t>(nbWorkers), 0) {}

void SearchTeam::create(int k, const Point& start) {
    const SearchSettings settings{seedOf(parameters_.seed, k), parameters_.annealingLevel};
    auto& searcher = searchers_[static_cast<std::size_t>(k)];
    searcher = std::make_unique<Searcher>(model_, domain_, settings);
    searcher->startFrom(start);
}

void SearchTeam::run(int k, std::int64_t work, const std::atomic<bool>& halt,
                     const Incumbent& shared) {
    Searcher& searcher = *searchers_[static_cast<std::size_t>(k)];
    char& mustAdopt = mustAdopt_[static_cast<std::size_t>(k)];
    if (mustAdopt != 0) searcher.adopt(shared);
    mustAdopt = 0;
    searcher.spend(work, halt);
}

bool SearchTeam::share(Solution& solution) {
    std::size_t owner = searchers_.size();
    for (std::size_t k = 0; k < searchers_.size(); ++k) {
        if (!solution.isImprovedBy(searchers_[k]->best())) continue;
        Incumbent best = searchers_[k]->best();
        best.finder = "local search";
        solution.replace(std::move(best));
        owner = k;
    }
    if (owner == searchers_.size()) return false;
    spread();
    mustAdopt_[owner] = 0;
    return true;
}

void SearchTeam::tighten(const std::vector<Interval>& domain) {
    for (const auto& searcher : searchers_) {
        if (searcher) searcher->tighten(domain);
    }
}

void SearchTeam::spread() {
    std::fill(mustAdopt_.begin(), mustAdopt_.end(), char{1});
}

std::int64_t SearchTeam::addTo(Statistics& statistics) {
    SearchStatistics total;
    for (const auto& searcher : searchers_) {
        if (!searcher) continue;
        total.work += searcher->statistics().work;
        total.iterations += searcher->statistics().iterations;
        total.accepted += searcher->statistics().accepted;
        total.improving += searcher->statistics().improving;
    }
    statistics.moves += total.iterations - counted_.iterations;
    statistics.accepted += total.accepted - counted_.accepted;
    statistics.improving += total.improving - counted_.improving;
    return total.work - std::exchange(counted_, total).work;
}

}  // namespace engine
