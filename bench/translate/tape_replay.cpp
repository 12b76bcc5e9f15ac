#include "tape_replay.hpp"

namespace bench {

void replayBuilding(const Tape& tape, ls_solver* solver) {
    for (const Call& call : tape.calls) {
        switch (call.kind) {
            case CallKind::createExpression:
                ls_create_expression(solver, call.a);
                break;
            case CallKind::createIntConstant:
                ls_create_int_constant(solver, call.integer);
                break;
            case CallKind::createDoubleConstant:
                ls_create_double_constant(solver, call.real);
                break;
            case CallKind::addOperand:
                ls_expr_add_operand(solver, call.a, call.b);
                break;
            case CallKind::setName:
                ls_expr_set_name(solver, call.a, tape.names.data() + call.b);
                break;
            case CallKind::addConstraint:
                ls_add_constraint(solver, call.a);
                break;
            case CallKind::addObjective:
                ls_add_objective(solver, call.a, call.b);
                break;
            case CallKind::close:
                break;
            case CallKind::isNamed:
                ls_expr_is_named(solver, call.a);
                break;
            case CallKind::getOperator:
                ls_expr_get_operator(solver, call.a);
                break;
            case CallKind::nbOperands:
                ls_expr_nb_operands(solver, call.a);
                break;
            case CallKind::getOperand:
                ls_expr_get_operand(solver, call.a, call.b);
                break;
        }
    }
}

}  // namespace bench
