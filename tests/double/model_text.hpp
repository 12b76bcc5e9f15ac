#pragma once

#include <string>

#include "localsolver.h"
#include "norv/model.hpp"
#include "translate/nlocalsolver.hpp"

namespace doubles {

/// The model as it stands, typed: a line an objective and constraint, but none for a single
/// objective without terms, and constraints without name share lines; then the decisions in the
/// order of creation, neighbours of one domain together; then a line an expression that has a name
/// or is used more than once. These are called by their names and, where there are none, $1, $2, …
/// In short: "N objectives, M constraints, K decisions".
std::string modelText(ls_solver* solver, bool inFull);

/// Compares rows and objective of an instance, as the host evaluates them, with the engine's values
/// of what was built from them, at points of all signs. The model is closed.
/// @return a line a difference.
std::string differencesByValue(const vex::NorvLocalSolver& link, const norv::Model& model);

}  // namespace doubles
