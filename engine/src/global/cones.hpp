#pragma once

#include <span>
#include <vector>

#include "global/factorable_model.hpp"
#include "global/relaxation.hpp"

namespace engine {

/// A row that is convex although its terms are not: sum parts^2 + constant <= head^2, where head is
/// not negative. Its norm is at most head (Lobo et al., "Applications of second-order cone
/// programming", Linear Algebra Appl. 284, 1998, sections 1 and 2.3).
struct Cone {
    std::vector<LinearForm> parts;
    double constant;  ///< not negative
    LinearForm head;
};

/// Rows of squares, one of which is negative, or a product that is (with y z = ((y + z)^2 - (y -
/// z)^2) / 4).
std::vector<Cone> conesOf(const FactorableModel& model);

/// Adds the planes of cones at `levels` [nbColumns]: those that they are beyond, or all.
/// @return how many.
enum class Planes { Violated, All };
std::size_t addPlanes(std::span<const Cone> cones, std::span<const double> levels, Planes which,
                      std::vector<Cut>& cuts);

}  // namespace engine
