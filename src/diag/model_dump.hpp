#pragma once

#include <ostream>

#include "localsolver.hpp"

/// Text of an optimizer's model: one line per objective, then one per constraint, each the whole
/// expression tree in prefix notation. Reads the model only; needs one that is not running.
///
/// Shared expressions are written in full wherever they occur. Nothing recurses, so the depth of
/// an expression does not matter. Writing ends early, without a message, when the stream fails.
/// Errors of the optimizer pass through.

namespace vex {

/// Writes `model`: lines "label: expression" in the optimizer's order, flushed one by one. The
/// label is the expression's name, or "obj" or "con" with the position, which counts from 0.
std::ostream& dumpModel(std::ostream& stream, const localsolver::LSModel& model);

/// Writes one expression: constants by value (doubles with six significant digits), decisions by
/// name ("x" without one), all else as "operator(operands)".
std::ostream& writeExpression(std::ostream& stream, localsolver::LSExpression expression);

/// Writes the printed name of `op`; "lsop" and the number for one that has none.
std::ostream& writeOperatorName(std::ostream& stream, int op);

}  // namespace vex
