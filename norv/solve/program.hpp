#pragma once

namespace norv {

/// norvsolve: reads a model file, has the link solve it as the host would, and checks the result.
/// Catches everything.
/// @param argv  the program's name first; UTF-8 on Windows.
/// @return what the program returns to its caller, an ExitCode.
int runProgram(int argc, const char* const* argv);

}  // namespace norv
