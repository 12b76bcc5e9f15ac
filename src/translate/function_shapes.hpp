#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "localsolver.h"
#include "translate/instruction_code.hpp"

/// What becomes of each function of the host's instruction code.

namespace vex {

/// How a function turns its arguments into an expression. x is the first argument; y and z follow.
enum class FunctionShape : std::uint8_t {
    refused,
    unary,        ///< op(x)
    binary,       ///< op(x, y)
    flatTop,      ///< op flattened, the last argument first
    flatBottom,   ///< op flattened, the first argument first
    square,       ///< x · x
    logarithm,    ///< factor · log(x)
    power,        ///< pow(x, y)
    signPower,    ///< x · pow(|x|, y - 1)
    implication,  ///< or(not x, y)
    choice,       ///< if(x, y, z)
    pi,
    distance,   ///< square root of the sum of the arguments' squares
    polynomial  ///< coefficients after the base, lowest power first
};

/// One row of the table.
struct FunctionRow {
    std::int32_t code;
    FunctionShape shape;
    ls_operator op = LS_OP_CONST;  ///< of the shapes that need one
    double factor = 1.0;           ///< of a logarithm: to its base
};

/// The accepted functions; all others are refused.
constexpr std::array<FunctionRow, 37> acceptedFunctions = {{
    {1, FunctionShape::unary, LS_OP_CEIL},
    {2, FunctionShape::unary, LS_OP_FLOOR},
    {3, FunctionShape::unary, LS_OP_ROUND},
    {7, FunctionShape::flatTop, LS_OP_MIN},
    {8, FunctionShape::flatTop, LS_OP_MAX},
    {9, FunctionShape::square},
    {10, FunctionShape::unary, LS_OP_EXP},
    {11, FunctionShape::unary, LS_OP_LOG},
    {12, FunctionShape::logarithm, LS_OP_LOG, 0.43429448190325176},
    {13, FunctionShape::unary, LS_OP_SQRT},
    {14, FunctionShape::unary, LS_OP_ABS},
    {15, FunctionShape::unary, LS_OP_COS},
    {16, FunctionShape::unary, LS_OP_SIN},
    {21, FunctionShape::power},
    {45, FunctionShape::pi},
    {50, FunctionShape::logarithm, LS_OP_LOG, 1.4426950408889634},
    {51, FunctionShape::unary, LS_OP_NOT},
    {52, FunctionShape::flatBottom, LS_OP_AND},
    {53, FunctionShape::flatBottom, LS_OP_OR},
    {54, FunctionShape::flatBottom, LS_OP_XOR},
    {55, FunctionShape::implication},
    {56, FunctionShape::binary, LS_OP_EQ},
    {57, FunctionShape::binary, LS_OP_EQ},
    {58, FunctionShape::binary, LS_OP_GT},
    {59, FunctionShape::binary, LS_OP_GEQ},
    {60, FunctionShape::binary, LS_OP_LT},
    {61, FunctionShape::binary, LS_OP_LEQ},
    {62, FunctionShape::binary, LS_OP_NEQ},
    {63, FunctionShape::choice},
    {64, FunctionShape::power},
    {65, FunctionShape::distance},
    {66, FunctionShape::binary, LS_OP_DIV},
    {74, FunctionShape::power},
    {75, FunctionShape::power},
    {92, FunctionShape::signPower},
    {100, FunctionShape::unary, LS_OP_TAN},
    {108, FunctionShape::polynomial},
}};

/// Row of every function code, so that the conversion looks one up by its number.
constexpr auto functionRows = [] {
    std::array<FunctionRow, functionNames.size()> rows{};
    for (auto& row : rows) row = {0, FunctionShape::refused};
    for (const auto& row : acceptedFunctions) rows[static_cast<std::size_t>(row.code)] = row;
    return rows;
}();

static_assert(std::ranges::is_sorted(acceptedFunctions, {}, &FunctionRow::code));

}  // namespace vex
