#pragma once

#include "defvars/defined_variables.hpp"
#include "host/codes.hpp"

namespace vex {

/// Searches the equalities for variables that they define and adds the pairs to the maps.
///
/// Found are continuous variables whose bounds differ, each in an equality where it occurs linearly
/// and which no other variable needs; rows with few candidates choose first. Pairs that the maps
/// hold already stay and are not tested; no pair is added that would make a variable depend on
/// itself. Says in log and status file how many were found.
/// On the host's calling thread, after the index base was set to 0.
void findDefiningEquations(ModelHandle nmo, DefinedVariables& definedVariables,
                           DefiningEquations& definingEquations);

}  // namespace vex
