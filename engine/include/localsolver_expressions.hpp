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

/// 0 or 1.
[[nodiscard]] inline LSExpression boolean(const LSModel& model) {
    return model.createExpression(LS_OP_BOOL);
}
/// An integer, lower <= x <= upper.
[[nodiscard]] inline LSExpression integer(const LSModel& model, std::int64_t lower,
                                          std::int64_t upper) {
    const LSExpression result = model.createExpression(LS_OP_INT);
    result.addOperand(model.createConstant(lower));
    result.addOperand(model.createConstant(upper));
    return result;
}
/// A real number, lower <= x <= upper; infinite bounds are allowed.
[[nodiscard]] inline LSExpression real(const LSModel& model, double lower, double upper) {
    const LSExpression result = model.createExpression(LS_OP_FLOAT);
    result.addOperand(model.createConstant(lower));
    result.addOperand(model.createConstant(upper));
    return result;
}

// Operators of the language. Each is one expression with two operands: prefer `sum` and `product`
// for long lists, whose one expression has them all.

template <class A, class B>
requires Formula<A, B>
[[nodiscard]] LSExpression operator+(A a, B b) {
    return make(LS_OP_SUM, a, b);
}
template <class A, class B>
requires Formula<A, B>
[[nodiscard]] LSExpression operator-(A a, B b) {
    return make(LS_OP_SUB, a, b);
}
[[nodiscard]] inline LSExpression operator-(LSExpression a) {
    return make(LS_OP_SUB, 0, a);
}
template <class A, class B>
requires Formula<A, B>
[[nodiscard]] LSExpression operator*(A a, B b) {
    return make(LS_OP_PROD, a, b);
}
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
template <class A, class B>
requires Formula<A, B>
[[nodiscard]] LSExpression operator>=(A a, B b) {
    return make(LS_OP_GEQ, a, b);
}
template <class A, class B>
requires Formula<A, B>
[[nodiscard]] LSExpression equal(A a, B b) {
    return make(LS_OP_EQ, a, b);
}

// Functions of any number of operands.

template <class... T>
requires Formula<T...>
[[nodiscard]] LSExpression sum(T... operands) {
    return make(LS_OP_SUM, operands...);
}
template <class... T>
requires Formula<T...>
[[nodiscard]] LSExpression product(T... operands) {
    return make(LS_OP_PROD, operands...);
}
template <class... T>
requires Formula<T...>
[[nodiscard]] LSExpression max(T... operands) {
    return make(LS_OP_MAX, operands...);
}
template <class... T>
requires Formula<T...>
[[nodiscard]] LSExpression min(T... operands) {
    return make(LS_OP_MIN, operands...);
}
/// 1 when all are nonzero.
template <class... T>
requires Formula<T...>
[[nodiscard]] LSExpression all(T... operands) {
    return make(LS_OP_AND, operands...);
}
/// 1 when one is nonzero.
template <class... T>
requires Formula<T...>
[[nodiscard]] LSExpression any(T... operands) {
    return make(LS_OP_OR, operands...);
}
/// The sum of a range of expressions, not empty: std::vector<LSExpression> and the like.
template <class Range>
requires(!Operand<Range>) [[nodiscard]] LSExpression sum(const Range& operands) {
    const LSExpression result = LSModel(operands.begin()->getSolver()).createExpression(LS_OP_SUM);
    for (const LSExpression& each : operands) result.addOperand(each);
    return result;
}

// Functions of one or two operands, of their mathematical meaning; angles in radians. Outside their
// domain they are NaN, which counts as violated, and as the worst objective.

[[nodiscard]] inline LSExpression abs(LSExpression a) {
    return make(LS_OP_ABS, a);
}
[[nodiscard]] inline LSExpression sqrt(LSExpression a) {
    return make(LS_OP_SQRT, a);
}
[[nodiscard]] inline LSExpression exp(LSExpression a) {
    return make(LS_OP_EXP, a);
}
/// The natural logarithm.
[[nodiscard]] inline LSExpression log(LSExpression a) {
    return make(LS_OP_LOG, a);
}
[[nodiscard]] inline LSExpression sin(LSExpression a) {
    return make(LS_OP_SIN, a);
}
[[nodiscard]] inline LSExpression cos(LSExpression a) {
    return make(LS_OP_COS, a);
}
template <class A, class B>
requires Formula<A, B>
[[nodiscard]] LSExpression pow(A base, B exponent) {
    return make(LS_OP_POW, base, exponent);
}
/// `yes` where `condition` is nonzero, else `no`.
template <class A, class B>
requires Formula<LSExpression, A, B>
[[nodiscard]] LSExpression ifThen(LSExpression condition, A yes, B no) {
    return make(LS_OP_IF, condition, yes, no);
}

// Objectives: the first one added comes first, later ones break its ties.

inline void minimize(const LSModel& model, LSExpression e) {
    model.addObjective(e, LS_MINIMIZE);
}
inline void maximize(const LSModel& model, LSExpression e) {
    model.addObjective(e, LS_MAXIMIZE);
}

}  // namespace localsolver::expressions
