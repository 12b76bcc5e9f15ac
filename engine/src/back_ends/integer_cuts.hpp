#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "linear/linear_model.hpp"

class ClpSimplex;

namespace engine {

/// Rows form <= 0 that cut off the optimum of a linear program and hold at every point of its rows
/// and bounds at which the integer columns are integers, as far as the back end's doubles tell:
/// they are loosened a little, and proved by nothing else. The deepest come first.
/// @param solver     at an optimum; it stays there.
/// @param isInteger  [nbColumns]
/// @param most       how many at most.
std::vector<LinearForm> integerCutsOf(ClpSimplex& solver,
                                      const std::vector<std::uint8_t>& isInteger, std::size_t most);

}  // namespace engine
