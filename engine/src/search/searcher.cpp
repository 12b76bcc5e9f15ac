#include "search/searcher.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "search/random.hpp"

namespace engine {

class Searcher::Impl {
public:
    Impl(const ClosedModel& model, std::vector<Interval> domain, SearchSettings settings)
        : model_(model), domain_(std::move(domain)), random_(settings.seed) {}

    void startFrom(const Point& point) {
        Point inside = point;
        for (std::size_t d = 0; d < inside.size(); ++d) {
            inside[d] = clamped(d, point[d].asDouble());
        }
        consider(inside);
    }

    void run(std::int64_t nbIterations, const std::atomic<bool>& stop) {
        for (std::int64_t n = 0; n < nbIterations && !stop; ++n) {
            ++statistics_.iterations;
            if (domain_.empty()) continue;
            Point candidate = best_.point;
            const std::size_t d = random_.below(domain_.size());
            const double width = domain_[d].upper - domain_[d].lower;
            candidate[d] = clamped(d, domain_[d].lower + width * random_.unit());
            if (consider(candidate)) ++statistics_.improving;
        }
    }

    void adopt(const Incumbent& incumbent) { best_ = incumbent; }
    [[nodiscard]] const Incumbent& best() const { return best_; }
    [[nodiscard]] const SearchStatistics& statistics() const { return statistics_; }

private:
    [[nodiscard]] Value clamped(std::size_t d, double v) const {
        v = std::clamp(v, domain_[d].lower, domain_[d].upper);
        if (!model_.isDiscrete(static_cast<DecisionIndex>(d))) return Value::ofDouble(v);
        return Value::ofInt(std::llround(v));
    }

    bool consider(const Point& point) {
        Incumbent candidate{point, judge(model_, point, values_), 0.0};
        for (const ExpressionIndex e : model_.constraint) {
            if (!values_[static_cast<std::size_t>(e)].isTrue()) candidate.violation += 1.0;
        }
        const bool accepted = best_.point.empty() ||
                              isBetter(model_, candidate.verdict, best_.verdict) ||
                              (!best_.verdict.feasible && candidate.violation < best_.violation);
        if (accepted) best_ = std::move(candidate);
        return accepted;
    }

    const ClosedModel& model_;
    std::vector<Interval> domain_;
    Random random_;
    Incumbent best_;
    SearchStatistics statistics_;
    std::vector<Value> values_;
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
