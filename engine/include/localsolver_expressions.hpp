#pragma once

#include <concepts>
#include <cstdint>
#include <type_traits>

#include "localsolver.hpp"

/// Models written as formulas, header only:
///
///     using namespace localsolver::expressions;
///     const LSModel model = solver.getModel();
///     const LSExpression x = integer(model, 0, 10), y = real(model, 0.0, 4.0);
///     model.addConstraint(2 * x + y <= 12);
///     maximize(model, sum(3 * x, 2 * y, sqrt(y)));
///
/// Each operator makes one new expression in the model of its operands, O(operands); numbers become
/// constants, integral ones of the integer type. At least one operand is an expression. All of it
/// requires the modelling state; refusals are those of localsolver.h and arrive as LSException.
/// "==" compares handles, as it always did; the relation is `equal`.
namespace localsolver::expressions {

/// What may stand beside an expression: a number or another expression.
template <class T>
concept Operand = std::same_as<T, LSExpression> || std::is_arithmetic_v<T>;

/// One operand is an expression, whose model the new one joins.
template <class... T>
concept Formula = (Operand<T> && ...) && (std::same_as<T, LSExpression> || ...);

/// The solver of the first operand that has one. @return not null.
template <Operand First, Operand... Rest>
[[nodiscard]] ls_solver* solverOf(First first, Rest... rest) {
    if constexpr (std::same_as<First, LSExpression>) {
        return first.getSolver();
    } else {
        return solverOf(rest...);
    }
}

/// The operand itself, or a constant of the solver's model: int64_t for integral types and bool,
/// double otherwise. NaN is refused.
template <Operand T>
[[nodiscard]] LSExpression asExpression(ls_solver* solver, T operand) {
    if constexpr (std::same_as<T, LSExpression>) {
        return operand;
    } else if constexpr (std::is_integral_v<T>) {
        return LSModel(solver).createConstant(static_cast<std::int64_t>(operand));
    } else {
        return LSModel(solver).createConstant(static_cast<double>(operand));
    }
}

/// A new expression `op` of the operands, in their order.
template <class... T>
requires Formula<T...>
[[nodiscard]] LSExpression make(LSOperator op, T... operands) {
    ls_solver* const solver = solverOf(operands...);
    const LSExpression result = LSModel(solver).createExpression(op);
    (result.addOperand(asExpression(solver, operands)), ...);
    return result;
}

// Decisions. Bounds are inclusive; an empty domain makes the model inconsistent.

/// 0 or 1; an integer. O(1), as all three.
[[nodiscard]] inline LSExpression boolean(const LSModel& model) {
    return model.createExpression(LS_OP_BOOL);
}
/// A 64-bit integer, lower <= x <= upper, from wherever the search likes to start;
/// LSExpression::setIntValue says where, once the model is closed.
[[nodiscard]] inline LSExpression integer(const LSModel& model, std::int64_t lower,
                                          std::int64_t upper) {
    const LSExpression result = model.createExpression(LS_OP_INT);
    result.addOperand(model.createConstant(lower));
    result.addOperand(model.createConstant(upper));
    return result;
}
/// A real number, lower <= x <= upper; infinite bounds are allowed, NaN is refused.
/// Methods that split domains need finite ones.
[[nodiscard]] inline LSExpression real(const LSModel& model, double lower, double upper) {
    const LSExpression result = model.createExpression(LS_OP_FLOAT);
    result.addOperand(model.createConstant(lower));
    result.addOperand(model.createConstant(upper));
    return result;
}

// Operators of the language. Each is one expression with two operands: prefer `sum` and `product`
// for long lists, whose one expression has them all.

/// An integer when both are integers, else a double; an integer beyond 64 bits becomes a double.
template <class A, class B>
requires Formula<A, B>
[[nodiscard]] LSExpression operator+(A a, B b) {
    return make(LS_OP_SUM, a, b);
}
/// Likewise.
template <class A, class B>
requires Formula<A, B>
[[nodiscard]] LSExpression operator-(A a, B b) {
    return make(LS_OP_SUB, a, b);
}
/// 0 - a.
[[nodiscard]] inline LSExpression operator-(LSExpression a) {
    return make(LS_OP_SUB, 0, a);
}
/// Likewise; 0 times an infinity is 0.
template <class A, class B>
requires Formula<A, B>
[[nodiscard]] LSExpression operator*(A a, B b) {
    return make(LS_OP_PROD, a, b);
}
/// A double, also between integers; 0 / 0 is NaN.
template <class A, class B>
requires Formula<A, B>
[[nodiscard]] LSExpression operator/(A a, B b) {
    return make(LS_OP_DIV, a, b);
}
/// Relations are 0 or 1: constraints, and operands like any other. Exact between integers, within
/// 1e-6 (absolute, and relative to the larger side) between real numbers.
template <class A, class B>
requires Formula<A, B>
[[nodiscard]] LSExpression operator<=(A a, B b) {
    return make(LS_OP_LEQ, a, b);
}
/// Likewise.
template <class A, class B>
requires Formula<A, B>
[[nodiscard]] LSExpression operator>=(A a, B b) {
    return make(LS_OP_GEQ, a, b);
}
/// Likewise. An equation between real numbers holds within the tolerance, on both sides.
template <class A, class B>
requires Formula<A, B>
[[nodiscard]] LSExpression equal(A a, B b) {
    return make(LS_OP_EQ, a, b);
}

// Functions of any number of operands, at least one of them an expression: one expression with all
// of them, O(operands).

/// Typed as `+`.
template <class... T>
requires Formula<T...>
[[nodiscard]] LSExpression sum(T... operands) {
    return make(LS_OP_SUM, operands...);
}
/// Typed as `*`.
template <class... T>
requires Formula<T...>
[[nodiscard]] LSExpression product(T... operands) {
    return make(LS_OP_PROD, operands...);
}
/// The largest one, of the type that all have, or a double.
template <class... T>
requires Formula<T...>
[[nodiscard]] LSExpression max(T... operands) {
    return make(LS_OP_MAX, operands...);
}
/// The smallest one, likewise.
template <class... T>
requires Formula<T...>
[[nodiscard]] LSExpression min(T... operands) {
    return make(LS_OP_MIN, operands...);
}
/// 1 when all are nonzero, else 0; operands of any type.
template <class... T>
requires Formula<T...>
[[nodiscard]] LSExpression all(T... operands) {
    return make(LS_OP_AND, operands...);
}
/// 1 when one is nonzero, else 0; operands of any type.
template <class... T>
requires Formula<T...>
[[nodiscard]] LSExpression any(T... operands) {
    return make(LS_OP_OR, operands...);
}
/// The sum of a range of expressions: std::vector<LSExpression> and the like.
/// @param operands  at least one, all of the same model; undefined for an empty range.
template <class Range>
requires(!Operand<Range>) [[nodiscard]] LSExpression sum(const Range& operands) {
    const LSExpression result = LSModel(operands.begin()->getSolver()).createExpression(LS_OP_SUM);
    for (const LSExpression& each : operands) result.addOperand(each);
    return result;
}

// Functions of one or two operands, of their mathematical meaning; angles in radians. Outside their
// domain they are NaN, which counts as violated, and as the worst objective.

/// Of the operand's type.
[[nodiscard]] inline LSExpression abs(LSExpression a) {
    return make(LS_OP_ABS, a);
}
/// A double, as all further down; from 0 on.
[[nodiscard]] inline LSExpression sqrt(LSExpression a) {
    return make(LS_OP_SQRT, a);
}
/// Infinite beyond 709.
[[nodiscard]] inline LSExpression exp(LSExpression a) {
    return make(LS_OP_EXP, a);
}
/// The natural logarithm; minus infinity at 0.
[[nodiscard]] inline LSExpression log(LSExpression a) {
    return make(LS_OP_LOG, a);
}
/// Of an angle in radians.
[[nodiscard]] inline LSExpression sin(LSExpression a) {
    return make(LS_OP_SIN, a);
}
/// Likewise.
[[nodiscard]] inline LSExpression cos(LSExpression a) {
    return make(LS_OP_COS, a);
}
/// NaN for a negative base with an exponent that is not integral.
template <class A, class B>
requires Formula<A, B>
[[nodiscard]] LSExpression pow(A base, B exponent) {
    return make(LS_OP_POW, base, exponent);
}
/// `yes` where `condition` is nonzero, else `no`; what is not taken may be NaN.
/// @param condition  of any type.
template <class A, class B>
requires Formula<LSExpression, A, B>
[[nodiscard]] LSExpression ifThen(LSExpression condition, A yes, B no) {
    return make(LS_OP_IF, condition, yes, no);
}

// Objectives: the first one added comes first, later ones break its ties.

/// @param e  a number of either type; NaN is the worst of all values.
inline void minimize(const LSModel& model, LSExpression e) {
    model.addObjective(e, LS_MINIMIZE);
}
/// Likewise.
inline void maximize(const LSModel& model, LSExpression e) {
    model.addObjective(e, LS_MAXIMIZE);
}

}  // namespace localsolver::expressions
