#pragma once

#include <cstdint>

namespace norv {

enum class StandardStream : std::uint8_t { output, error };

/// Width of the terminal that the stream writes to, in characters; 0 when that is a file, a pipe,
/// or a terminal that cannot go back to the start of a line. Asks the system at each call.
int terminalColumns(StandardStream stream);

/// Is the stream a terminal that takes ANSI colours, and has nobody set NO_COLOR?
bool terminalTakesColour(StandardStream stream);

}  // namespace norv
