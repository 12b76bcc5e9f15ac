#pragma once

#include <array>
#include <cmath>
#include <span>

#include "model/operator_table.hpp"
#include "operators/adjoints.hpp"
#include "operators/arithmetic.hpp"
#include "operators/curvature.hpp"
#include "operators/distance.hpp"
#include "operators/inverse.hpp"
#include "operators/linear.hpp"
#include "operators/narrowing.hpp"
#include "operators/operands.hpp"
#include "operators/relation.hpp"

namespace engine {

/// The meaning of every operator: one row each, filled in the file of its family.
///
/// A new operator: its number in localsolver.h, its line in model/operator_table.hpp, and a row in
/// the file of its family, which table.cpp lists. A new column: a member here with a neutral
/// default, a view of the operands with what it needs to know, the functions in the families' files
/// and one walk over the model that calls them. No walk asks which operator it has before it.
///
/// Values. Integers stay integers in sum, sub, prod, max, min, abs, dist, mod and if; a result
/// beyond 64 bits becomes a double. Relations and logic give integers 0 or 1; ceil, floor and round
/// an integer when it fits; div, sqrt, log, exp, pow, cos, sin, tan and scalarprod over doubles a
/// double. mod takes the dividend's sign.
///
/// Domain errors (division or mod by zero, log of 0 or less, root of a negative number, an index
/// outside its array, 0 to a negative power) and results beyond the doubles give NaN; only leaves
/// may be infinite. In a product an exact 0 makes 0 of an infinity and of 0 to a negative power.
/// NaN goes through everything but `and` with a false operand, `or` with a true one and the branch
/// of `if` that is not taken: the negation of a domain error is no way to a feasible point.
enum class LogicForm : std::uint8_t {
    Number,    ///< no truth of its own: its value counts
    Relation,  ///< of two sides
    Not,
    All,     ///< and
    Any,     ///< or
    Odd,     ///< xor
    Choice,  ///< if
};

/// What an operator without an entry in a column does.
namespace neutral {
inline Value value(const ValueOperands&) {
    return notANumber;
}
inline Distance distance(const DistanceOperands& x) {
    return distanceOfNumber(x.own());
}
inline void slope(const ValueOperands&, double, Adjoints&) {}
inline Range image(const RangeOperands&) {
    return {-infinity, infinity, /*mayBeNan=*/true};
}
inline void narrowing(const NarrowingStep&) {}
inline Curvature curvature(const CurvatureOperands&) {
    return Curvature::Unknown;
}
inline bool linear(const Operands&, double, LinearTerms&) {
    return false;
}
inline MaybeStep inverse(const InverseOperands&, const Goal&) {
    return std::nullopt;
}
}  // namespace neutral

/// A narrowing that learns only that the operands are not NaN.
inline void numbersOnly(const NarrowingStep& x) {
    for (std::size_t k = 0; k < x.size(); ++k) x.restrictToNumber(k);
}

struct OperatorRow {
    ls_operator op;
    LogicForm logic = LogicForm::Number;
    /// An operand that is NaN makes it NaN.
    bool needsNumbers = true;
    /// 0 to a negative power stays apart from other NaNs.
    bool givesPoles = false;
    /// A value inside the domain of every operand.
    double safeOperand = 1.0;

    /// The result as it comes: an operation that leaves the doubles' range gives an infinity.
    Value (*value)(const ValueOperands& x) = neutral::value;
    /// How far from true and false; of connectives composed of their operands' distances.
    Distance (*distance)(const DistanceOperands& x) = neutral::distance;
    /// Gives each operand `weight` times the partial derivative by it. Where there are kinks, the
    /// derivative of the piece that the point lies on; steps have none.
    void (*slope)(const ValueOperands& x, double weight, Adjoints& to) = neutral::slope;
    /// All values that it can take when its operands stay in their ranges, none of them empty where
    /// it needs numbers: natural interval extension (Moore 1966), containing the judge's rounding.
    Range (*image)(const RangeOperands& x) = neutral::image;
    /// Narrows the operands by its own range, which is not mayBeNan (HC4-revise: Benhamou,
    /// Goualard, Granvilliers, Puget 1999). O(operands). Bounds are computed outward.
    void (*narrowing)(const NarrowingStep& x) = neutral::narrowing;
    /// Not all operands are constant.
    Curvature (*curvature)(const CurvatureOperands& x) = neutral::curvature;
    /// Adds `factor` times the expression as a constant and terms in its operands.
    /// @return false: it is not linear in them; nothing was added.
    bool (*linear)(const Operands& x, double factor, LinearTerms& to) = neutral::linear;
    /// Solved for one operand, the others standing still: a truth for relations and connectives,
    /// whatever was asked for a choice, else a number, and its own value is one.
    MaybeStep (*inverse)(const InverseOperands& x, const Goal& goal) = neutral::inverse;
    /// The numbers that it rounds to the same whole number as `last`, its last operand; null where
    /// it rounds none.
    Interval (*cell)(double last) = nullptr;
};

/// All rows by number.
extern const std::array<OperatorRow, nbOperators> operatorRows;

inline const OperatorRow& rowOf(ls_operator op) {
    return operatorRows[static_cast<std::size_t>(op)];
}

/// Has a distance composed from its operands' distances.
inline bool isConnective(ls_operator op) {
    const LogicForm form = rowOf(op).logic;
    return form != LogicForm::Number && form != LogicForm::Relation;
}

/// Value of operator expression `e` from the values of its operands.
///
/// @param e       neither a decision nor a constant, with as many operands as its operator asks.
/// @param values  [nbExpressions]; an array has no value of its own, its users read its operands.
inline Value computeValue(const ClosedModel& model, ExpressionIndex e,
                          std::span<const Value> values) {
    const OperatorRow& row = rowOf(model.operatorOf(e));
    const Value v = row.value(ValueOperands(model, e, values));
    if (v.isInt() || std::isfinite(v.asDouble())) return v;
    return row.givesPoles && isPole(v) ? v : notANumber;
}

}  // namespace engine
