#include "search/searcher.hpp"

#include <utility>

#include "search/local_search.hpp"

namespace engine {

/// The interface's face of LocalSearch.
class Searcher::Impl : public LocalSearch {
public:
    using LocalSearch::LocalSearch;
};

Searcher::Searcher(const ClosedModel& model, std::vector<Interval> domain, SearchSettings settings)
    : impl_(std::make_unique<Impl>(model, std::move(domain), settings)) {}
Searcher::~Searcher() = default;
void Searcher::startFrom(const Point& point) {
    impl_->startFrom(point);
}
void Searcher::run(std::int64_t nbIterations, const std::atomic<bool>& stop) {
    impl_->run(nbIterations, stop);
}
void Searcher::spend(std::int64_t work, const std::atomic<bool>& stop) {
    impl_->spend(work, stop);
}
void Searcher::tighten(const std::vector<Interval>& domain) {
    impl_->tighten(domain);
}
const Incumbent& Searcher::best() const {
    return impl_->best();
}
void Searcher::adopt(const Incumbent& incumbent) {
    impl_->adopt(incumbent);
}
const SearchStatistics& Searcher::statistics() const {
    return impl_->statistics();
}

}  // namespace engine
