#pragma once

#include "defvars/defined_variables.hpp"
#include "host/codes.hpp"

/// The search for defining equations as plainly as it can be told: one ordered set, one depth-first
/// walk through all definitions per question. Says nothing to the log.
void findByReference(vex::ModelHandle nmo, vex::DefinedVariables& definedVariables,
                     vex::DefiningEquations& definingEquations);

/// Is a variable reached from the row that defines it by a way through other definitions?
bool isCircular(vex::ModelHandle nmo, const vex::DefinedVariables& definedVariables);
