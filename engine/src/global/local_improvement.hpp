#pragma once

#include <optional>
#include <vector>

#include "evaluate/pace.hpp"
#include "global/clean_points.hpp"
#include "nonlinear/nonlinear_program.hpp"

namespace engine {

/// Points near those of a relaxation, by local solves of the smooth part of the model.
class LocalImprovement {
public:
    /// All outlive it.
    LocalImprovement(const ClosedModel& model, CleanPoints& points);

    /// Solves from `start` inside `box` [nbDecisions] with the discrete decisions rounded, and
    /// offers what comes out. @return whether it was kept.
    bool run(const Point& start, const std::vector<Interval>& box, Pace& pace);

private:
    const ClosedModel& model_;
    CleanPoints& points_;
    std::optional<NonlinearProgram> program_;  ///< made when first needed
};

}  // namespace engine
