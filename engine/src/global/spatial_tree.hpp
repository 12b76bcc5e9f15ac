#pragma once

#include <functional>

#include "evaluate/pace.hpp"
#include "evaluate/propagator.hpp"
#include "global/clean_points.hpp"
#include "global/factorable_model.hpp"

namespace engine {

/// What a spatial tree is told and whom it tells.
struct SpatialSettings {
    Pace& pace;  ///< a step is a node or a pivot
    /// Asked at every box for better points of others, which it offers; or none.
    std::function<void()> exchange = {};
    /// Receives every better bound of the first objective, in its direction; or none.
    std::function<void(double)> onBound = {};
    /// Looks for better points near `start` inside [nbDecisions] `box` and offers them, in steps of
    /// a pace; or none.
    std::function<void(const Point& start, const std::vector<Interval>& box, Pace& pace)> improve =
        {};
};

/// How a tree has ended.
struct SpatialOutcome {
    enum class Status {
        Optimal,       ///< no point is better than the best one by more than the tolerance
        Inconsistent,  ///< every box is proved empty, with the judge's tolerance
        Open
    };
    Status status = Status::Open;
    double bound;  ///< proved, of the first objective in its direction; infinite: none
    std::int64_t nbNodes = 0;
};

/// Proves a model with one objective or none by branch and bound over boxes: of integers, reals and
/// truth values of relations (Tawarmalani and Sahinidis, "Global optimization of mixed-integer
/// nonlinear programs", Math. Prog. 99, 2004). Each box is propagated, relaxed linearly, bounded by
/// what the multipliers prove in safe arithmetic, and split where the relaxation misses most.
///
/// Boxes wait in a heap by their bounds; from each that is taken the search dives. Without the
/// simplex method the bounds are those of propagation alone.
///
/// @param propagator  started without conflict; comes back as it was.
/// @param start       values of decisions that the model does not use.
SpatialOutcome searchBoxes(const ClosedModel& model, const FactorableModel& factorable,
                           Propagator& propagator, const Point& start, CleanPoints& points,
                           const SpatialSettings& settings);

}  // namespace engine
