#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace norv {

/// What the user asked for. Empty paths stand for "not asked".
struct CommandLine {
    std::string model;
    std::vector<std::string> settings;  ///< "name=value", in the order given
    std::string optionFile;
    double timeLimit = 60.0;                     ///< seconds, 0 or more
    std::optional<std::int32_t> iterationLimit;  ///< 0 or more
    std::int32_t threads = 1;                    ///< 1 or more
    std::string statusFile;
    std::string solutionFile;
    bool printsSolution = false;
    std::string jsonFile;  ///< "-": standard output; the log then goes to standard error
    std::string link = "vexcclib64.so";
    std::string systemDirectory;
};

/// Outcome of reading the arguments: either a command line or what to print and return instead.
struct ParsedArguments {
    std::optional<CommandLine> commandLine;
    int exitCode = 0;  ///< without a command line: --help and --version 0, faults badCommandLine
};

/// Reads the program's arguments; prints help, version or the fault itself.
ParsedArguments parseArguments(int argc, const char* const* argv);

}  // namespace norv
