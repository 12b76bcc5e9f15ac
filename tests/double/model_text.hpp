#pragma once

#include <string>

#include "localsolver.h"

namespace doubles {

/// The model as it stands, typed: a line an objective and constraint, but none for a single
/// objective without terms, and constraints without name share lines; then the decisions in the
/// order of creation, neighbours of one domain together; then a line an expression that has a name
/// or is used more than once. These are called by their names and, where there are none, $1, $2, …
std::string modelText(ls_solver* solver);

/// "N objectives, M constraints, K decisions".
std::string modelSize(ls_solver* solver);

}  // namespace doubles
