#pragma once

#include <optional>
#include <ostream>
#include <string>

#include "norv/model.hpp"
#include "solve/point_check.hpp"

namespace norv {

/// A number as a user reads it back without loss: the shortest text that gives the same double.
std::string numberText(double value);

/// Three lines: statuses, objective (when a point is claimed), check. `check` is empty when the
/// status claims no point.
void printSummary(std::ostream& out, const Model& model, const std::optional<PointCheck>& check);

/// One line "name<TAB>level" for each variable whose level is not 0, in model order.
void writeSolution(std::ostream& out, const Model& model);

/// The result as one JSON object; docs/norvsolve.md lists its members.
/// @param file  the model's path, as given.
void writeJson(std::ostream& out, const std::string& file, const Model& model,
               const std::optional<PointCheck>& check);

}  // namespace norv
