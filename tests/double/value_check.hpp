#pragma once

#include <string>

#include "norv/model.hpp"
#include "translate/nlocalsolver.hpp"

namespace doubles {

/// Compares rows and objective of an instance, as the host evaluates them, with the engine's values
/// of what was built from them, at points of all signs. The model is closed.
/// @return a line a difference.
std::string differencesByValue(const vex::NorvLocalSolver& link, const norv::Model& model);

}  // namespace doubles
