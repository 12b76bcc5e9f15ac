#pragma once

#include "host/codes.hpp"

namespace vex {

/// Writes one line to log and status file when the user asks for defined variables (pairs `defvar`
/// in the option file, or the option "aggrvars"), which this build keeps as ordinary variables.
/// `opt` may be null.
void reportIgnoredOptions(EnvironmentHandle nev, OptionHandle opt);

}  // namespace vex
