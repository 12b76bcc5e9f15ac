#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "norv/environment.hpp"
#include "norv/model.hpp"
#include "norv/options.hpp"
#include "solve/box_verdict.hpp"
#include "solve/model_file.hpp"
#include "solve/shared_library.hpp"

namespace norv {

/// A setting of one of the link's options, "name=value" or "name value".
struct Assignment {
    std::string text;
    std::string source = "command line";  ///< stands in front of a complaint about it
};

/// "name=value" as an assignment takes it, whatever is in the value.
[[nodiscard]] std::string assignmentText(const std::string& name, const std::string& value);

/// What the solve of a model needs to know, however the user said it.
struct SolveSettings {
    ReadingSettings reading;
    std::vector<Assignment> assignments;         ///< in the order given
    std::string optionFile;                      ///< of the link; empty: none
    double timeLimit = 60.0;                     ///< seconds, 0 or more
    std::optional<std::int32_t> iterationLimit;  ///< 0 or more
    std::int32_t threads = 1;                    ///< 1 or more
    std::string link = std::string("vexcclib64") + SharedLibrary::suffix;  ///< by name or path
    std::string systemDirectory;  ///< of optlocalsolver.def; empty: the program's
};

/// Limits, threads and directory, as the settings want them; the time limit is rounded up to whole
/// seconds.
/// @param log  is told when that changes it.
void configure(Environment& environment, const SolveSettings& settings, std::ostream& log);

/// An object with the definitions alone. Failure (badInput) when they cannot be read.
Options definedOptions(const SolveSettings& settings);

/// The options for the link: those of the option file, then the assignments. Nothing when there are
/// no assignments and nobody insists: the link then reads the option file.
/// @param always  insist: the caller has options of its own to set.
/// @param log  receives what the option library says about the option file.
/// Failure: badInput when the option file cannot be read, badCommandLine for a refused assignment,
/// with the option library's reason.
std::optional<Options> makeOptions(const SolveSettings& settings, bool always, std::ostream& log);

/// Loads the link, has it solve the model, or what stands in for it, and checks the point it claims
/// against the user's model, which has levels and statuses afterwards. In the meantime Ctrl+C
/// asks it to stop, and a second one ends the process.
/// @param options  as made by `makeOptions` from the same settings.
SolveResult solve(LoadedModel& loaded, Environment& environment, const SolveSettings& settings,
                  const std::optional<Options>& options);

}  // namespace norv
