#pragma once

#include "translate/nlocalsolver.hpp"

namespace vex {

/// Which of the option library's messages reach the log.
enum class MessageChoice {
    all,
    forTheUser,  ///< types up to 7, and 9
};

/// Writes the pending messages of the option object, line by line, to log and status file, and
/// clears them. Uses `link.textBuf`.
void echoMessages(NorvLocalSolver& link, MessageChoice choice);

}  // namespace vex
