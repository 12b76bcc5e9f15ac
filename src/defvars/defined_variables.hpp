#pragma once

#include <cstdint>
#include <map>

/// Variables that an equation defines.
///
/// A defined variable becomes no decision of the optimizer: the expression that its defining
/// equation yields stands for it, and that equation becomes no constraint. The two maps are
/// inverse to each other at all times. They are filled during model setup, before the first row is
/// translated, and read-only afterwards. Nothing here knows the optimizer.

namespace vex {

/// Defined variable to the row that defines it; both indices count from 0.
using DefinedVariables = std::map<std::int32_t, std::int32_t>;

/// Defining row to the variable that it defines; the inverse of DefinedVariables.
using DefiningEquations = std::map<std::int32_t, std::int32_t>;

}  // namespace vex
