#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "norv/export.hpp"
#include "norv/model.hpp"
#include "norv/model_builder.hpp"

namespace norv {

/// value = f(argument), both of them variables; f is continuous, linear between breakpoints, and 0
/// at 0.
struct PiecewiseLinear {
    std::int32_t argument;
    std::int32_t value;
    std::vector<double> slopes;       ///< one more than breakpoints
    std::vector<double> breakpoints;  ///< ascending, in the argument's unit
};

/// f(x). O(breakpoints).
[[nodiscard]] NORV_API double valueOf(const PiecewiseLinear& function, double x);

/// Adds the equations value = f(argument): for each piece a binary variable, of which one is 1, and
/// a part of the argument that is 0 or, with its binary variable, within the piece. That is the
/// "multiple choice model" of K. L. Croxton, B. Gendron and T. L. Magnanti, "A comparison of
/// mixed-integer programming models for nonconvex piecewise linear cost minimization problems"
/// (2003). The starting levels are those of the argument's level.
/// @param model    finished from a copy of `builder`.
/// @return whether that was possible; where an argument has no finite bounds, neither of its own
/// nor implied by linear rows, `builder` is not to be used any more.
[[nodiscard]] NORV_API bool addPieces(const Model& model, ModelBuilder& builder,
                                      std::span<const PiecewiseLinear> functions);

}  // namespace norv
