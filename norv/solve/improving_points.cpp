#include "solve/improving_points.hpp"

#include <algorithm>
#include <utility>

namespace norv {

ImprovingPoints::ImprovingPoints(LoadedModel& loaded, Writer write)
    : loaded_(loaded),
      write_(std::move(write)),
      levels_(static_cast<std::size_t>(
          (loaded.forLink ? *loaded.forLink : loaded.model).nbVariables())) {}

void ImprovingPoints::look() {
    constexpr Clock::duration shortest = std::chrono::milliseconds(200);
    const Clock::time_point start = Clock::now();
    if (!source_ || start < next_) return;
    lookNow();
    const Clock::time_point end = Clock::now();
    next_ = end + std::max(shortest, 4 * (end - start));
}

void ImprovingPoints::lookNow() {
    if (!source_(levels_) || levels_ == seen_) return;
    seen_ = levels_;
    Model& model = loaded_.model;
    const auto own = std::span(levels_).first(static_cast<std::size_t>(model.nbVariables()));
    // The link writes all levels that it reports later; those it leaves alone are the same here.
    const PointCheck check = checkLevels(model, own);
    if (!check.passed) return;
    model.setLevels(own);
    write_(check);
}

}  // namespace norv
