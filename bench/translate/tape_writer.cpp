#include <memory>
#include <stdexcept>
#include <vector>

#include "host/libraries.hpp"
#include "localsolver.h"
#include "tape.hpp"
#include "translate/nlocalsolver.hpp"

/// The optimizer's functions that model setup uses, as a pen: each writes itself down. Expressions
/// are numbered as the engine numbers them; operators and operands are kept, because the translator
/// asks for them. The module binds its own references to these, not to
/// the engine's.

namespace {

bench::Tape* tape = nullptr;

struct Expression {
    int op;
    bool isNamed = false;
    std::vector<std::int32_t> operands;
};
std::vector<Expression> expressions;

int append(int op) {
    expressions.push_back({op, false, {}});
    return static_cast<int>(expressions.size()) - 1;
}
Expression& at(int e) {
    return expressions[static_cast<std::size_t>(e)];
}

bench::Call& write(bench::CallKind kind, std::int32_t a) {
    bench::Call& call = tape->calls.emplace_back();
    call.kind = kind;
    call.a = a;
    call.integer = 0;
    return call;
}

}  // namespace

extern "C" {

ls_solver* ls_create_solver(void) {
    return nullptr;
}
void ls_delete_solver(ls_solver*) {}
void ls_set_exception_callback(ls_exception_callback, void*) {}

int ls_create_expression(ls_solver*, int op) {
    write(bench::CallKind::createExpression, op);
    return append(op);
}
int ls_create_int_constant(ls_solver*, int64_t value) {
    write(bench::CallKind::createIntConstant, 0).integer = value;
    return append(LS_OP_CONST);
}
int ls_create_double_constant(ls_solver*, double value) {
    write(bench::CallKind::createDoubleConstant, 0).real = value;
    return append(LS_OP_CONST);
}
void ls_expr_add_operand(ls_solver*, int expr, int operand) {
    write(bench::CallKind::addOperand, expr).b = operand;
    at(expr).operands.push_back(operand);
}
void ls_expr_set_name(ls_solver*, int expr, const char* name) {
    write(bench::CallKind::setName, expr).b = static_cast<std::int32_t>(tape->names.size());
    tape->names.append(name).push_back('\0');
    at(expr).isNamed = true;
}
void ls_add_constraint(ls_solver*, int expr) {
    write(bench::CallKind::addConstraint, expr);
}
void ls_add_objective(ls_solver*, int expr, int direction) {
    write(bench::CallKind::addObjective, expr).b = direction;
}
void ls_close(ls_solver*) {
    write(bench::CallKind::close, 0);
}

int ls_expr_is_named(ls_solver*, int expr) {
    write(bench::CallKind::isNamed, expr);
    return at(expr).isNamed ? 1 : 0;
}
int ls_expr_get_operator(ls_solver*, int expr) {
    write(bench::CallKind::getOperator, expr);
    return at(expr).op;
}
int ls_expr_nb_operands(ls_solver*, int expr) {
    write(bench::CallKind::nbOperands, expr);
    return static_cast<int>(at(expr).operands.size());
}
int ls_expr_get_operand(ls_solver*, int expr, int position) {
    write(bench::CallKind::getOperand, expr).b = position;
    return at(expr).operands[static_cast<std::size_t>(position)];
}
// The callback refers to it; setup does not call it.
void ls_stop(ls_solver*) {}

__attribute__((visibility("default"))) void writeTape(hostapi::ModelHandle model,
                                                      hostapi::EnvironmentHandle environment,
                                                      hostapi::OptionHandle options,
                                                      bench::Tape* target) {
    char message[256];
    if (vex::nmoGetReady(message, sizeof message) == 0 ||
        vex::nevGetReady(message, sizeof message) == 0 ||
        vex::optGetReady(message, sizeof message) == 0)
        throw std::runtime_error(message);
    tape = target;
    expressions.clear();
    vex::NorvLocalSolver link;
    link.nmo = model;
    link.nev = environment;
    link.opt = options;
    link.solver = std::make_unique<localsolver::LocalSolver>();
    link.setupModel();
}

}  // extern "C"
