#pragma once

#include <array>
#include <cstdint>

#include "model/operator_table.hpp"

namespace engine {

/// Value and derivatives up to the second order of a function of one or two arguments.
struct LocalDerivatives {
    double value = 0.0;
    double byA = 0.0;
    double byB = 0.0;
    double byAA = 0.0;
    double byAB = 0.0;
    double byBB = 0.0;
};

/// A function of `a`, or of `a` and `b`. Where it has kinks, the derivatives of the piece that the
/// point lies on; outside its domain NaN or infinite, never a trap.
using LocalRule = LocalDerivatives (*)(double a, double b);

/// How an operator enters a graph of smooth nodes.
enum class SmoothShape : std::uint8_t {
    Leaf,           ///< a decision or a constant
    Sum,            ///< linear in its operands: sum, sub
    Product,        ///< multiplied one after the other
    Function,       ///< `rule` of one operand
    Pair,           ///< `rule` of two operands
    Fold,           ///< `rule` of two operands, again and again: max, min
    Choice,         ///< one of its operands, chosen by the first
    ScalarProduct,  ///< of two arrays
    Array,          ///< has no value of its own
    Step,           ///< constant between its jumps: relations, logic, rounding
};

/// One operator's row.
struct SmoothRow {
    ls_operator op;
    SmoothShape shape;
    LocalRule rule;  ///< of Function, Pair and Fold; else none
};

LocalDerivatives productRule(double a, double b);
LocalDerivatives squareRule(double a, double b);
LocalDerivatives quotientRule(double a, double b);
LocalDerivatives powerRule(double a, double b);
LocalDerivatives largerRule(double a, double b);
LocalDerivatives smallerRule(double a, double b);
LocalDerivatives distanceRule(double a, double b);
LocalDerivatives remainderRule(double a, double b);
LocalDerivatives absoluteRule(double a, double b);
LocalDerivatives rootRule(double a, double b);
LocalDerivatives logarithmRule(double a, double b);
LocalDerivatives exponentialRule(double a, double b);
LocalDerivatives cosineRule(double a, double b);
LocalDerivatives sineRule(double a, double b);
LocalDerivatives tangentRule(double a, double b);

/// All operators in the order of their numbers.
constexpr std::array<SmoothRow, nbOperators> smoothTable{{
    {LS_OP_BOOL, SmoothShape::Leaf, nullptr},
    {LS_OP_FLOAT, SmoothShape::Leaf, nullptr},
    {LS_OP_CONST, SmoothShape::Leaf, nullptr},
    {LS_OP_SUM, SmoothShape::Sum, nullptr},
    {LS_OP_SUB, SmoothShape::Sum, nullptr},
    {LS_OP_PROD, SmoothShape::Product, nullptr},
    {LS_OP_MAX, SmoothShape::Fold, largerRule},
    {LS_OP_MIN, SmoothShape::Fold, smallerRule},
    {LS_OP_EQ, SmoothShape::Step, nullptr},
    {LS_OP_NEQ, SmoothShape::Step, nullptr},
    {LS_OP_GEQ, SmoothShape::Step, nullptr},
    {LS_OP_LEQ, SmoothShape::Step, nullptr},
    {LS_OP_GT, SmoothShape::Step, nullptr},
    {LS_OP_LT, SmoothShape::Step, nullptr},
    {LS_OP_IF, SmoothShape::Choice, nullptr},
    {LS_OP_NOT, SmoothShape::Step, nullptr},
    {LS_OP_AND, SmoothShape::Step, nullptr},
    {LS_OP_OR, SmoothShape::Step, nullptr},
    {LS_OP_XOR, SmoothShape::Step, nullptr},
    {LS_OP_ABS, SmoothShape::Function, absoluteRule},
    {LS_OP_DIST, SmoothShape::Pair, distanceRule},
    {LS_OP_DIV, SmoothShape::Pair, quotientRule},
    {LS_OP_MOD, SmoothShape::Pair, remainderRule},
    {LS_OP_ARRAY, SmoothShape::Array, nullptr},
    {LS_OP_AT, SmoothShape::Choice, nullptr},
    {LS_OP_SCALARPROD, SmoothShape::ScalarProduct, nullptr},
    {LS_OP_CEIL, SmoothShape::Step, nullptr},
    {LS_OP_FLOOR, SmoothShape::Step, nullptr},
    {LS_OP_ROUND, SmoothShape::Step, nullptr},
    {LS_OP_SQRT, SmoothShape::Function, rootRule},
    {LS_OP_LOG, SmoothShape::Function, logarithmRule},
    {LS_OP_EXP, SmoothShape::Function, exponentialRule},
    {LS_OP_POW, SmoothShape::Pair, powerRule},
    {LS_OP_COS, SmoothShape::Function, cosineRule},
    {LS_OP_SIN, SmoothShape::Function, sineRule},
    {LS_OP_TAN, SmoothShape::Function, tangentRule},
    {LS_OP_INT, SmoothShape::Leaf, nullptr},
}};

constexpr bool isInOrder(const std::array<SmoothRow, nbOperators>& table) {
    for (int k = 0; k < nbOperators; ++k) {
        if (table[static_cast<std::size_t>(k)].op != k) return false;
    }
    return true;
}
static_assert(isInOrder(smoothTable), "one row for each operator, in the order of numbers");

}  // namespace engine
