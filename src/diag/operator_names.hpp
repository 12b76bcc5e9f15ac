#pragma once

#include <array>
#include <string_view>

#include "localsolver.h"

namespace vex {

/// Printed names of the optimizer's operators, indexed by operator code.
constexpr std::array<std::string_view, 37> operatorNames = {
    "b",    "x",   "c",   "sum",   "sub", "prod",       "max",  "min",   "eq",    "neq",
    "geq",  "leq", "gt",  "lt",    "if",  "not",        "and",  "or",    "xor",   "abs",
    "dist", "div", "mod", "array", "at",  "scalarprod", "ceil", "floor", "round", "sqrt",
    "log",  "exp", "pow", "cos",   "sin", "tan",        "i"};

static_assert(operatorNames.size() == LS_OP_INT + 1, "one name per operator");
static_assert(operatorNames[LS_OP_SCALARPROD] == "scalarprod" && operatorNames[LS_OP_INT] == "i");

}  // namespace vex
