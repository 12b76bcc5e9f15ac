#pragma once

#include "solve/command_line.hpp"
#include "solve/exit_code.hpp"

namespace norv {

/// Reads the model, solves it, prints the log and the outcome, writes the results asked for.
/// Throws what `currentComplaint` tells about.
ExitCode runSolveCommand(const CommandLine& line);

}  // namespace norv
