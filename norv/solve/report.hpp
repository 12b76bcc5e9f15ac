#pragma once

#include <optional>
#include <ostream>
#include <string>

#include "norv/model.hpp"
#include "solve/run.hpp"

namespace norv {

/// Three or four lines: statuses, what they mean when bounds were imposed, objective (when a point
/// is claimed), check.
void printSummary(std::ostream& out, const Model& model, const SolveResult& result);

/// One line "name<TAB>level" for each variable whose level is not 0, in model order.
void writeSolution(std::ostream& out, const Model& model);

/// The result as one JSON object; docs/norvsolve.md lists its members.
void writeJson(std::ostream& out, const RunRecord& run);

}  // namespace norv
