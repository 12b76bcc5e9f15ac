#pragma once

#include <span>

#include "linear/linear_model.hpp"

namespace engine {

/// Bounds of the columns, borrowed.
struct Box {
    std::span<const double> lower;  ///< [nbColumns] -infinity allowed
    std::span<const double> upper;  ///< [nbColumns] infinity allowed
};

/// Whether the row multipliers prove that no point of the box satisfies the model's rows, each
/// relaxed by its tolerance: the combined row would have to pass the largest value that the box
/// allows it (Farkas 1902). Computed in outward-rounded arithmetic, so true is a proof whatever
/// solver the multipliers came from, and with either sign.
///
/// @param multipliers  [nbRows]. O(entries).
bool provesInfeasibility(const LinearModel& model, const Box& box,
                         std::span<const double> multipliers);

}  // namespace engine
