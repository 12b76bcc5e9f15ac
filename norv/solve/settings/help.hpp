#pragma once

#include <ostream>

#include "solve/settings/command_line.hpp"

namespace norv {

/// What `--help` prints: usage, the settings in groups with ranges and defaults, exit codes, and
/// how AMPL's clients call the program.
void printHelp(std::ostream& out, const Catalogue& catalogue);

/// What `-=` prints, a line for each setting; with `-=text` only those whose name or meaning
/// contains the text.
void listSettings(std::ostream& out, const Catalogue& catalogue, const std::string& searched);
/// What `-!` prints: the names and their aliases alone, a line each.
void listNames(std::ostream& out, const Catalogue& catalogue);

/// What `name=?` prints: value and meaning. Failure (badInput) for an unknown name.
void answer(std::ostream& out, const Catalogue& catalogue, const std::string& name,
            const Settings& settings);

/// The manual page, in the language of man.
void printManual(std::ostream& out, const Catalogue& catalogue);
/// Completions of names, choices and files for bash.
/// Failure (badInput) for another shell.
void printCompletion(std::ostream& out, const Catalogue& catalogue, const std::string& shell);

}  // namespace norv
