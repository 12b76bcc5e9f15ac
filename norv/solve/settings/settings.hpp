#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "hostapi/codes.hpp"
#include "solve/model_file.hpp"
#include "solve/shared_library.hpp"

namespace norv {

/// A setting of one of the link's options, "name=value" or "name value".
struct Assignment {
    std::string text;
    std::string source = "command line";  ///< stands in front of a complaint about it
};

/// What the solve of a model needs to know, however the user said it.
struct SolveSettings {
    ReadingSettings reading;
    std::vector<Assignment> assignments;  ///< of the link's options, in the order given
    std::string optionFile;               ///< empty: none
    /// Does the option file set something of the program? Then the link cannot read it, and its
    /// other lines are `fileAssignments`.
    bool ownsOptions = false;
    std::vector<Assignment> fileAssignments;
    double timeLimit = 60.0;                                     ///< seconds of search, 0 or more
    double wallLimit = std::numeric_limits<double>::infinity();  ///< seconds of the program
    double stopAfter = std::numeric_limits<double>::infinity();  ///< seconds without improvement
    std::int32_t iterationLimit = hostapi::noIterationLimit;     ///< 0 or more
    std::int32_t threads = 1;                                    ///< 0: as many as the machine has
    std::string link = std::string("vexcclib64") + SharedLibrary::suffix;  ///< by name or path
    std::string systemDirectory;  ///< of optlocalsolver.def; empty: the program's
    std::string startFile;        ///< a starting point by names; empty: the model's own
};

/// What a client of the AMPL protocol wants to be told of the solution, its own numbers. Bit 1 asks
/// for the .sol file.
namespace wanted_solution {
constexpr std::int32_t file = 1;
constexpr std::int32_t levels = 2;   ///< printed
constexpr std::int32_t duals = 4;    ///< printed; there are none
constexpr std::int32_t silence = 8;  ///< no message
constexpr std::int32_t all = 15;
}  // namespace wanted_solution

/// Where results go. Empty paths stand for "not asked", "-" for the standard output.
struct OutputSettings {
    std::string statusFile;
    std::string solution;
    std::string json;  ///< "-": the log then goes to standard error
    std::string plot;
    std::string report;
    std::string model;        ///< --write
    std::string solFile;      ///< -oSTUB
    std::int32_t level = -1;  ///< outlev; -1: 0 for a client, else 1
    bool isQuiet = false;
    std::int32_t wanted = 0;  ///< sum of `wanted_solution` bits
    bool printsSolution = false;
    bool explains = false;
    bool isStrict = false;
};

/// A setting that somebody made, as the log and the results repeat it.
struct MadeSetting {
    std::string name;
    std::string value;
};

/// All that can be set.
struct Settings {
    std::string model;  ///< path of the model or trace; "-": standard input; a stub for clients
    SolveSettings solve;
    OutputSettings output;
    std::string rerun;  ///< a JSON result to repeat
    bool showsHelp = false;
    bool showsVersion = false;
    bool showsManual = false;
    std::string completion;         ///< the shell to write completions for
    std::vector<MadeSetting> made;  ///< each once, the last value
};

}  // namespace norv
