#pragma once

#include <ostream>
#include <string>

#include "solve/plot/trace_file.hpp"

namespace norv {

/// Draws the best value found over time as an SVG picture: a step line with a point at each new
/// value, and the bound as a dashed line where the trace has one.
/// @param title  the instance's name; any text.
void writeTracePlot(std::ostream& out, const TraceFile& trace, const std::string& title);

}  // namespace norv
