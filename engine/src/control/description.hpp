#pragma once

#include <string>

namespace engine {

class Solver;

/// One line: time, iterations, status, the objectives of the best point or what it violates, the
/// best proved bound, the gap, and which method found the point.
std::string solverInfo(Solver& solver);
/// One line: moves, accepted and improving moves, nodes of trees.
std::string statisticsInfo(const Solver& solver);
/// Several lines, without a last line end: sizes of the model, parameters, limits,
/// and, once they are chosen, which methods apply and why others do not.
std::string solverDescription(const Solver& solver);

/// The name of a state as messages and texts give it.
const char* stateName(int state);

}  // namespace engine
