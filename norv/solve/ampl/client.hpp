#pragma once

#include "solve/run.hpp"
#include "solve/settings/command_line.hpp"

namespace norv {

/// Solves the model in "STUB.nl" and reports in "STUB.sol", where AMPL and other clients of its
/// protocol look: also when settings are refused, the model cannot be read or the link fails. A
/// file of that name from an earlier run is removed at the start.
/// @param variable  what the environment says in norvsolve_options.
/// @return for a client `solved` once the file is written, whatever it says.
/// Throws what `currentComplaint` tells about when not even the head of the model can be read, or
/// the file cannot be written.
[[nodiscard]] ExitCode solveForClient(const Request& request, const Catalogue& catalogue,
                                      const std::string& variable, Clock::time_point start);

}  // namespace norv
