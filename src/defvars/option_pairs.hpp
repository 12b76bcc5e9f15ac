#pragma once

#include "defvars/defined_variables.hpp"
#include "host/codes.hpp"

namespace vex {

/// Takes over the pairs of variable and defining equation that the user's option file names.
///
/// A pair is dropped with a warning when its equation is no equality, its variable not continuous
/// or one of the two in an earlier pair. Nothing else is checked here: what the equation cannot
/// define shows when the model is built. Silent without pairs.
/// @param opt  may be null.
/// @return false when the host cannot deliver the pairs; the log says so, the maps are unchanged.
[[nodiscard]] bool readDefinedVariableOptions(ModelHandle nmo, OptionHandle opt,
                                              DefinedVariables& definedVariables,
                                              DefiningEquations& definingEquations);

}  // namespace vex
