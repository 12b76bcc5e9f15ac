#pragma once

#include <optional>
#include <ostream>
#include <string>

#include "solve/run.hpp"

namespace norv {

/// A few lines: statuses, what they mean when bounds were imposed, objective and bound (when a
/// point is claimed), check, times.
/// @param isColoured  the first line in green for a solution, yellow for none, red for a failure.
void printSummary(std::ostream& out, const RunRecord& run, bool isColoured);

/// "passed, no row or bound violated", without the full stop; of no point too.
[[nodiscard]] std::string checkText(const std::optional<PointCheck>& check);

/// One line "name<TAB>level" for each variable whose level is not 0, in model order.
void writeSolution(std::ostream& out, const Model& model);

/// The result as one JSON object; docs/result.schema.json describes it.
void writeJson(std::ostream& out, const RunRecord& run);

/// The result as one page of HTML that needs no other file.
void writeHtml(std::ostream& out, const RunRecord& run);

}  // namespace norv
