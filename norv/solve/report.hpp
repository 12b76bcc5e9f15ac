#pragma once

#include <optional>
#include <ostream>
#include <string>

#include "norv/model.hpp"
#include "solve/box_verdict.hpp"

namespace norv {

/// A number as a user reads it back without loss: the shortest text that gives the same double.
std::string numberText(double value);

/// Three or four lines: statuses, what they mean when bounds were imposed, objective (when a point
/// is claimed), check.
void printSummary(std::ostream& out, const Model& model, const SolveResult& result);

/// One line "name<TAB>level" for each variable whose level is not 0, in model order.
void writeSolution(std::ostream& out, const Model& model);

/// The result as one JSON object; docs/norvsolve.md lists its members.
/// @param file  the model's path, as given.
void writeJson(std::ostream& out, const std::string& file, const Model& model,
               const SolveResult& result);

}  // namespace norv
