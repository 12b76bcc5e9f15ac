#pragma once

#include "translate/nlocalsolver.hpp"

/// Files that the user asks for by an option. A false result means that the solve must not go on;
/// the reason is then in the log and in the status file. LocalSolver's errors pass through.

namespace vex {

/// Writes the text of the model to the file of the option "dumpmodel", when it is set.
[[nodiscard]] bool dumpModelOnRequest(const NorvLocalSolver& link);

/// Saves LocalSolver's environment to the file of the option "writelsp", when it is set.
[[nodiscard]] bool saveEnvironmentOnRequest(const NorvLocalSolver& link);

}  // namespace vex
