#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <string_view>

#include "localsolver.h"

namespace engine {

/// What the operands of an operator may be.
enum class OperandKind : std::uint8_t {
    None,        ///< takes no operands
    Bounds,      ///< constants
    Scalars,     ///< anything but arrays
    ArrayIndex,  ///< first an array, then a scalar
    Arrays       ///< arrays only
};

/// Static type of an operator's value: the type that it has unless integer arithmetic overflows.
enum class ResultType : std::uint8_t {
    Integer,
    Double,
    OfConstant,      ///< the constant's own
    OfOperands,      ///< double when an operand is
    OfBranches,      ///< double when an operand after the first is
    OfFirstOperand,  ///< that of the first operand
};

constexpr int anyNumber = std::numeric_limits<int>::max();

/// One operator: its number and printed name, how many operands it takes and what they may be.
struct OperatorInfo {
    ls_operator op;
    std::string_view name;
    int minOperands;
    int maxOperands;
    OperandKind operands;
    ResultType result;
};

constexpr int nbOperators = 37;

/// All operators in the order of their numbers. Checks, printers and the environment file read it.
constexpr std::array<OperatorInfo, nbOperators> operatorTable{{
    {LS_OP_BOOL, "b", 0, 0, OperandKind::None, ResultType::Integer},
    {LS_OP_FLOAT, "x", 2, 2, OperandKind::Bounds, ResultType::Double},
    {LS_OP_CONST, "c", 0, 0, OperandKind::None, ResultType::OfConstant},
    {LS_OP_SUM, "sum", 0, anyNumber, OperandKind::Scalars, ResultType::OfOperands},
    {LS_OP_SUB, "sub", 2, 2, OperandKind::Scalars, ResultType::OfOperands},
    {LS_OP_PROD, "prod", 0, anyNumber, OperandKind::Scalars, ResultType::OfOperands},
    {LS_OP_MAX, "max", 1, anyNumber, OperandKind::Scalars, ResultType::OfOperands},
    {LS_OP_MIN, "min", 1, anyNumber, OperandKind::Scalars, ResultType::OfOperands},
    {LS_OP_EQ, "eq", 2, 2, OperandKind::Scalars, ResultType::Integer},
    {LS_OP_NEQ, "neq", 2, 2, OperandKind::Scalars, ResultType::Integer},
    {LS_OP_GEQ, "geq", 2, 2, OperandKind::Scalars, ResultType::Integer},
    {LS_OP_LEQ, "leq", 2, 2, OperandKind::Scalars, ResultType::Integer},
    {LS_OP_GT, "gt", 2, 2, OperandKind::Scalars, ResultType::Integer},
    {LS_OP_LT, "lt", 2, 2, OperandKind::Scalars, ResultType::Integer},
    {LS_OP_IF, "if", 3, 3, OperandKind::Scalars, ResultType::OfBranches},
    {LS_OP_NOT, "not", 1, 1, OperandKind::Scalars, ResultType::Integer},
    {LS_OP_AND, "and", 0, anyNumber, OperandKind::Scalars, ResultType::Integer},
    {LS_OP_OR, "or", 0, anyNumber, OperandKind::Scalars, ResultType::Integer},
    {LS_OP_XOR, "xor", 0, anyNumber, OperandKind::Scalars, ResultType::Integer},
    {LS_OP_ABS, "abs", 1, 1, OperandKind::Scalars, ResultType::OfOperands},
    {LS_OP_DIST, "dist", 2, 2, OperandKind::Scalars, ResultType::OfOperands},
    {LS_OP_DIV, "div", 2, 2, OperandKind::Scalars, ResultType::Double},
    {LS_OP_MOD, "mod", 2, 2, OperandKind::Scalars, ResultType::OfOperands},
    {LS_OP_ARRAY, "array", 0, anyNumber, OperandKind::Scalars, ResultType::OfOperands},
    {LS_OP_AT, "at", 2, 2, OperandKind::ArrayIndex, ResultType::OfFirstOperand},
    {LS_OP_SCALARPROD, "scalarprod", 2, 2, OperandKind::Arrays, ResultType::OfOperands},
    {LS_OP_CEIL, "ceil", 1, 1, OperandKind::Scalars, ResultType::Integer},
    {LS_OP_FLOOR, "floor", 1, 1, OperandKind::Scalars, ResultType::Integer},
    {LS_OP_ROUND, "round", 1, 1, OperandKind::Scalars, ResultType::Integer},
    {LS_OP_SQRT, "sqrt", 1, 1, OperandKind::Scalars, ResultType::Double},
    {LS_OP_LOG, "log", 1, 1, OperandKind::Scalars, ResultType::Double},
    {LS_OP_EXP, "exp", 1, 1, OperandKind::Scalars, ResultType::Double},
    {LS_OP_POW, "pow", 2, 2, OperandKind::Scalars, ResultType::Double},
    {LS_OP_COS, "cos", 1, 1, OperandKind::Scalars, ResultType::Double},
    {LS_OP_SIN, "sin", 1, 1, OperandKind::Scalars, ResultType::Double},
    {LS_OP_TAN, "tan", 1, 1, OperandKind::Scalars, ResultType::Double},
    {LS_OP_INT, "i", 2, 2, OperandKind::Bounds, ResultType::Integer},
}};

constexpr bool isComplete(const std::array<OperatorInfo, nbOperators>& table) {
    for (int k = 0; k < nbOperators; ++k) {
        const OperatorInfo& info = table[static_cast<std::size_t>(k)];
        const bool takesNone = info.operands == OperandKind::None;
        if (info.op != k || info.name.empty() || info.minOperands > info.maxOperands) return false;
        if (takesNone != (info.maxOperands == 0)) return false;
    }
    return true;
}
static_assert(isComplete(operatorTable), "one line for each operator, in the order of numbers");

constexpr bool isOperator(int number) {
    return number >= 0 && number < nbOperators;
}

/// @param op  one of the table's numbers.
constexpr const OperatorInfo& operatorInfo(int op) {
    return operatorTable[static_cast<std::size_t>(op)];
}

constexpr bool isDecisionOperator(int op) {
    return op == LS_OP_BOOL || op == LS_OP_FLOAT || op == LS_OP_INT;
}

}  // namespace engine
