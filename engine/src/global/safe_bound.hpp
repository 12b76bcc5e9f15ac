#pragma once

#include <span>
#include <vector>

#include "linear/farkas.hpp"
#include "linear/linear_model.hpp"

namespace engine {

/// What the row multipliers prove of cost * x over the rows and the box, whatever solver they came
/// from (Neumaier and Shcherbina, "Safe bounds in linear and mixed-integer linear programming",
/// Math. Prog. 99, 2004): computed in outward-rounded arithmetic.
struct SafeBound {
    double lower;  ///< no point has a smaller cost; -infinity when nothing is proved
    /// [nbColumns] the smallest size of the reduced cost, 0 where its sign is not sure: a point
    /// that moves column j away from its bound by t costs at least lower + |reducedCost[j]| * t.
    /// Positive: away from its lower bound.
    std::vector<double> reducedCost;
};

/// Do the rows hold as they stand, or each relaxed by its tolerance?
enum class RowSides { AsTheyStand, Relaxed };

/// @param cost         [nbColumns]
/// @param multipliers  [nbRows], dual values. O(entries).
SafeBound safeBoundOf(const LinearModel& model, std::span<const double> cost, const Box& box,
                      std::span<const double> multipliers, RowSides sides);

}  // namespace engine
