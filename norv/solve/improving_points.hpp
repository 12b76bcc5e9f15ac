#pragma once

#include <chrono>
#include <functional>
#include <span>
#include <vector>

#include "solve/model_file.hpp"
#include "solve/point_check.hpp"

namespace norv {

/// Looks at the best point of a running search and has each new one written down that holds, so
/// that a process that is killed leaves it behind.
class ImprovingPoints {
public:
    /// Fills the levels of the model that the link solves with the best point so far.
    /// @return false: there is none.
    using Source = std::function<bool(std::span<double> levels)>;
    /// @param check  of the point, whose levels and objective the user's model has.
    using Writer = std::function<void(const PointCheck& check)>;

    /// @param loaded  outlives this object.
    ImprovingPoints(LoadedModel& loaded, Writer write);

    /// Of the search that begins now; none when it ends.
    void setSource(Source source) { source_ = std::move(source); }

    /// To be called at the search's events, on its thread: looks unless it has done so a fifth of a
    /// second ago. Where looking and writing take long, four fifths of the time are the search's.
    void look();

private:
    using Clock = std::chrono::steady_clock;
    void lookNow();

    LoadedModel& loaded_;
    Writer write_;
    Source source_;
    std::vector<double> levels_;  ///< [variables of the link's model]
    std::vector<double> seen_;    ///< the last point, likewise; empty: none
    Clock::time_point next_;      ///< not before
};

}  // namespace norv
