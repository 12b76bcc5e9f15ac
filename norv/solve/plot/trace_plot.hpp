#pragma once

#include <ostream>
#include <string>

#include "solve/plot/trace_file.hpp"

namespace norv {

/// Draws the best value found over time as an SVG picture: a step line with a point at each new
/// value, and the bound as a dashed line where the trace has one.
/// The time without a point is shaded, with a dotted line for the count of violated constraints
/// where that is known, on a scale of its own. Colours follow the reader's choice of light and
/// dark.
/// @param title      the instance's name; any text.
/// @param direction  "minimise" or "maximise", or empty: not known.
void writeTracePlot(std::ostream& out, const TraceFile& trace, const std::string& title,
                    const std::string& direction = {});

/// Characters that mean something in SVG and HTML as references; those that are forbidden there as
/// blanks.
[[nodiscard]] std::string escapedText(const std::string& text);

}  // namespace norv
