#pragma once

#include "model/array.hpp"
#include "model/instance.hpp"

namespace norv {

/// What the variables stay within in every feasible point.
struct ImpliedBounds {
    Array<double> lower;  ///< [nbVariables] at least the instance's own; 0 or less for a
                          ///< semi-continuous variable
    Array<double> upper;  ///< [nbVariables] likewise
};

/// Bounds that the activities of the linear rows imply, as in M. W. P. Savelsbergh, "Preprocessing
/// and probing techniques for mixed integer programming problems" (1994), section 1. Each is
/// loosened by what rounding may have taken. Rows with quadratic or nonlinear parts tell nothing.
/// O(entries) a round; ends, at the latest after 10 rounds, when no further variable gets a bound.
[[nodiscard]] ImpliedBounds impliedBounds(const Instance& instance);

}  // namespace norv
