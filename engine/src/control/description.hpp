#pragma once

#include <string>

namespace engine {

class Solver;

/// One line: time, iterations, feasibility and objectives of the best point.
std::string solverInfo(Solver& solver);
/// One line: moves, accepted and improving moves.
std::string statisticsInfo(const Solver& solver);
/// Several lines, without a last line end: sizes of the model, parameters, phases.
std::string solverDescription(const Solver& solver);

/// The name of a state as messages and texts give it.
const char* stateName(int state);

}  // namespace engine
