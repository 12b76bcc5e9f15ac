#pragma once

#include <string>

namespace engine {

class Solver;

/// The whole environment as text: model, parameters and phases (the format is in docs/engine.md).
std::string environmentText(const Solver& solver);

/// Writes environmentText to a file, in the C locale and with '\n' line ends everywhere.
/// Refused (as a Refusal that names file and reason) when the file cannot be written whole.
void saveEnvironment(const Solver& solver, const std::string& fileName);

}  // namespace engine
