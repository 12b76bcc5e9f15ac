#pragma once

#include <string>

#include "solve/model_file.hpp"

namespace norv {

/// Takes a starting point from a file: "name<TAB>level" a line, as --solution writes it, where
/// variables that are not named are 0; or a text .sol file with a level for each variable.
/// @return one line for the log: what became of it.
/// Throws ReadError for a file that cannot be read, with the place of the fault.
[[nodiscard]] std::string takeStart(LoadedModel& loaded, const std::string& path);

}  // namespace norv
