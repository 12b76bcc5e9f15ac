#pragma once

#include <optional>
#include <string>
#include <vector>

#include "solve/exit_code.hpp"

namespace norv {

/// A command line as AMPL and other clients of its solver protocol write it:
/// "norvsolve STUB -AMPL [key=value ...]", "norvsolve -s STUB [key=value ...]" for the same without
/// a client, "norvsolve -v", "norvsolve -=".
struct AmplCommand {
    enum class Task { solve, showVersion, listKeywords };
    Task task = Task::solve;
    bool isCalledByClient = false;      ///< -AMPL: the client prints the message and reads the file
    std::string stub;                   ///< the model is in "stub.nl"; the ending may be written
    std::vector<std::string> keywords;  ///< what follows the stub
};

/// Nothing when the command line is none of the protocol, that is without -AMPL, -s, -v and -=.
/// Failure (badCommandLine) for one without a stub, or with other options in front of it.
[[nodiscard]] std::optional<AmplCommand> parseAmplCommand(int argc, const char* const* argv);

/// Solves the model and reports in "stub.sol", for which the client looks: also when keywords are
/// refused, the model cannot be read or the link fails. A file of that name from an earlier run is
/// removed at the start. Keywords of the command line win over those in the environment.
/// Throws what `currentComplaint` tells about when not even the head of the model can be read, or
/// the file cannot be written.
[[nodiscard]] ExitCode runAmplCommand(const AmplCommand& command);

}  // namespace norv
