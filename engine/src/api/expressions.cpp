#include "api/contract.hpp"
#include "model/operator_table.hpp"

using namespace engine;
using namespace engine::contract;

int ls_create_expression(ls_solver* solver, int op) {
    return guarded(__func__, -1, [&] {
        Solver& s = requireState(solver, modelling);
        requireChoice("operator", op, 0, nbOperators - 1);
        if (op == LS_OP_CONST) {
            throw Refusal(LS_ERROR_ARGUMENT,
                          "a constant needs a value, make it with ls_create_int_constant or "
                          "ls_create_double_constant");
        }
        return s.model.createExpression(static_cast<ls_operator>(op));
    });
}

int ls_create_int_constant(ls_solver* solver, int64_t value) {
    return guarded(__func__, -1, [&] {
        return requireState(solver, modelling).model.createConstant(Value::ofInt(value));
    });
}

int ls_create_double_constant(ls_solver* solver, double value) {
    return guarded(__func__, -1, [&] {
        Solver& s = requireState(solver, modelling);
        return s.model.createConstant(Value::ofDouble(requireNumber(value)));
    });
}

void ls_expr_add_operand(ls_solver* solver, int expr, int operand) {
    guarded(__func__, [&] {
        Solver& s = requireState(solver, modelling);
        s.model.addOperand(requireExpression(s, expr), requireExpression(s, operand));
    });
}

void ls_expr_set_name(ls_solver* solver, int expr, const char* name) {
    guarded(__func__, [&] {
        Solver& s = requireState(solver, notRunning);
        requireGiven("name", name != nullptr);
        s.model.names.setName(requireExpression(s, expr), name);
    });
}

int ls_expr_is_named(ls_solver* solver, int expr) {
    return guarded(__func__, 0, [&]() -> int {
        const Solver& s = requireState(solver, anyState);
        return s.model.names.isNamed(requireExpression(s, expr));
    });
}

int ls_expr_get_name(ls_solver* solver, int expr, char* text, int length) {
    return guarded(__func__, 0, [&] {
        const Solver& s = requireState(solver, anyState);
        if (!s.model.names.isNamed(requireExpression(s, expr))) {
            throw Refusal(LS_ERROR_ARGUMENT, formatText("expression %d has no name", expr));
        }
        return copyText(s.model.names.nameOf(expr), text, length);
    });
}

int ls_expr_get_operator(ls_solver* solver, int expr) {
    return guarded(__func__, -1, [&]() -> int {
        const Solver& s = requireState(solver, anyState);
        return s.model.operatorOf(requireExpression(s, expr));
    });
}

int ls_expr_nb_operands(ls_solver* solver, int expr) {
    return guarded(__func__, 0, [&]() -> int {
        const Solver& s = requireState(solver, anyState);
        return s.model.nbOperandsOf(requireExpression(s, expr));
    });
}

int ls_expr_get_operand(ls_solver* solver, int expr, int position) {
    return guarded(__func__, -1, [&]() -> int {
        const Solver& s = requireState(solver, anyState);
        const ExpressionIndex e = requireExpression(s, expr);
        return s.model.operandOf(e, requirePosition("operands", position, s.model.nbOperandsOf(e)));
    });
}

int ls_expr_is_decision(ls_solver* solver, int expr) {
    return guarded(__func__, 0, [&]() -> int {
        const Solver& s = requireState(solver, anyState);
        return isDecisionOperator(s.model.operatorOf(requireExpression(s, expr)));
    });
}

int ls_expr_is_double(ls_solver* solver, int expr) {
    return guarded(__func__, 0, [&]() -> int {
        const Solver& s = requireState(solver, anyState);
        const ls_operator op = s.model.operatorOf(requireExpression(s, expr));
        // The type of an operator's value follows from operands that may still be missing.
        if (op != LS_OP_CONST && !isDecisionOperator(op)) requireState(solver, notModelling);
        return s.model.isDouble(expr);
    });
}

int ls_nb_expressions(ls_solver* solver) {
    return guarded(__func__, 0,
                   [&]() -> int { return requireState(solver, anyState).model.nbExpressions(); });
}
