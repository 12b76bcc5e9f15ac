#pragma once

#include <span>

#include "defvars/defined_variables.hpp"
#include "host/codes.hpp"

namespace vex {

/// Solves the defining row of every defined variable for it, by the host's own evaluation at the
/// levels in the model object, and writes the levels found there.
///
/// A variable comes after all defined variables of its row; apart from that they come in ascending
/// order. O(variables + entries of the defining rows), the host's evaluations aside; no recursion.
/// @return false as soon as a level cannot be computed: the row cannot be evaluated, does not
///         contain the variable, needs the variable itself, or gives no finite level. The levels
///         written up to then stay.
[[nodiscard]] bool evaluateDefinedVariables(ModelHandle nmo,
                                            const DefinedVariables& definedVariables);

/// The same for levels outside the model object, which stays as it is.
/// @param levels  [nbVariables] those of defined variables are replaced.
[[nodiscard]] bool computeDefinedVariables(ModelHandle nmo,
                                           const DefinedVariables& definedVariables,
                                           std::span<double> levels);

}  // namespace vex
