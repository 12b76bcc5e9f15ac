#pragma once

#include <optional>
#include <string>

#include "norv/model.hpp"
#include "solve/point_check.hpp"

namespace norv {

/// What the link's statuses mean for a model with infinite bounds, which the link replaces by
/// hostapi::imposedBound; it then reports a proved optimum as "feasible" only.
struct BoxVerdict {
    enum class Kind {
        nothing,        ///< the statuses speak for themselves
        optimal,        ///< proved, at least within the box
        unbounded,      ///< proved for the box, whose border the objective gains from
        infeasible,     ///< proved for the box
        standsAtBound,  ///< a point without proof, at the box's border
    };
    Kind kind = Kind::nothing;
    std::string text;  ///< empty for nothing
};

/// The link reports 7 or 8 with solve status 1 when the optimizer ended on its own, without a limit
/// or an interrupt. Unless an objective threshold was reached, only a proof makes it do that. A
/// convex model whose optimum lies inside the box has it without the box too.
/// @param check          of the levels; nothing when none is claimed.
/// @param hasThreshold   the option "dualbound" was set.
[[nodiscard]] BoxVerdict boxVerdict(const Model& model, const std::optional<PointCheck>& check,
                                    bool hasThreshold);

/// How a solve ended.
struct SolveResult {
    std::optional<PointCheck> check;  ///< nothing when the model status claims no feasible point
    BoxVerdict verdict;
};

}  // namespace norv
