#pragma once

#include <optional>
#include <string>

#include "solve/solve_run.hpp"

namespace norv {

/// What the user asked for. Empty paths stand for "not asked".
struct CommandLine {
    std::string model;
    SolveSettings solve;
    std::string statusFile;
    std::string solutionFile;
    bool printsSolution = false;
    std::string plotFile;
    std::string jsonFile;  ///< "-": standard output; the log then goes to standard error
};

/// Outcome of reading the arguments: either a command line or what to print and return instead.
struct ParsedArguments {
    std::optional<CommandLine> commandLine;
    int exitCode = 0;  ///< without a command line: --help and --version 0, faults badCommandLine
};

/// Reads the program's arguments; prints help, version or the fault itself.
ParsedArguments parseArguments(int argc, const char* const* argv);

}  // namespace norv
