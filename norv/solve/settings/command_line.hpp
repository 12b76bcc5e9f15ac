#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "solve/settings/catalogue.hpp"

namespace norv {

/// One setting as it was said, before anybody looked at its value.
struct SaidSetting {
    std::string name;
    std::string value;
    std::string source;
};

/// What a command line asks for, in the words of people and of AMPL's clients:
/// "norvsolve FILE --time-limit 5 seed=3", "norvsolve STUB -AMPL timelim=5".
struct Request {
    enum class Task { solve, listSettings, listNames, answer };
    Task task = Task::solve;
    std::string searched;                ///< of listSettings: only those that contain it
    std::vector<std::string> questions;  ///< "name=?"
    std::string file;                    ///< empty: none was given
    bool isClient = false;               ///< -AMPL: the client prints the message
    bool writesSolution = false;         ///< -AMPL, -s or -oSTUB: there is to be a .sol file
    std::string solutionStub;            ///< of -oSTUB
    bool echoes = true;                  ///< not -e
    std::vector<SaidSetting> said;       ///< in the order given
    std::string fault;                   ///< the first one of the words, or empty
};

/// Reads the words of the command line. Faults do not throw, so that a client can be told of them.
///
/// A setting is written "--name value", "--name=value", "name=value", "name = value" or, behind the
/// file, "name value"; a flag needs no value. "-" is the standard input, "--" ends all settings.
[[nodiscard]] Request readCommandLine(int argc, const char* const* argv,
                                      const Catalogue& catalogue);

/// Settings as they stand in a variable of the environment: "name=value", "name value" or
/// "name = value", separated by blanks; a value with blanks in single or double quotes, where a
/// doubled quote stands for one.
/// Failure (badInput) for a missing value or an open quote.
[[nodiscard]] std::vector<SaidSetting> readVariable(std::string_view text,
                                                    const std::string& source,
                                                    const Catalogue& catalogue);

/// The lines of an option file that set something of the program; `rest` receives the others, with
/// "file:line" as their sources. Failure (badInput) when the file cannot be read.
[[nodiscard]] std::vector<SaidSetting> readOptionFile(const std::string& path,
                                                      std::vector<Assignment>& rest);

/// The settings of a request: those of the option file, then of the variable norvsolve_options,
/// then of the command line; later ones win. Failure (badInput), naming the source, for unknown
/// names and refused values.
[[nodiscard]] Settings settingsOf(const Request& request, const std::string& variable,
                                  const Catalogue& catalogue);

/// The definitions of the link's options: in the folder that the words name with
/// --system-directory, else beside the program or where an installation keeps them.
[[nodiscard]] std::string definitionFileFor(int argc, const char* const* argv);
/// The system directory, with a separator at the end.
[[nodiscard]] std::string systemDirectory(const std::string& given);

}  // namespace norv
