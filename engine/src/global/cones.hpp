#pragma once

#include <span>
#include <vector>

#include "global/factorable_model.hpp"
#include "global/relaxation.hpp"

namespace engine {

/// Makes cones of the rows of squares, one of which is negative, or a product that is (with y z =
/// ((y + z)^2 - (y - z)^2) / 4). Definitions that only such rows used are dropped.
void takeConesOut(FactorableModel& model);

/// Raises heads of a single column to the norms: planes leave them a little too low for ever.
/// @param levels  [nbColumns]
/// @return whether any was.
bool raiseHeads(std::span<const Cone> cones, std::span<double> levels);

/// Those that levels are beyond, or all.
enum class Planes { Violated, All };

/// Adds planes of cones at `levels` [nbColumns]. @return how many.
std::size_t addPlanes(std::span<const Cone> cones, std::span<const double> levels, Planes which,
                      std::vector<Cut>& cuts);

}  // namespace engine
