#include <memory>
#include <stdexcept>

#include "host/libraries.hpp"
#include "localsolver.h"
#include "tape.hpp"
#include "translate/nlocalsolver.hpp"

/// The optimizer's functions that model setup uses, as a pen: each writes itself down. Expressions
/// are numbered as the engine numbers them. The module binds its own references to these, not to
/// the engine's.

namespace {

bench::Tape* tape = nullptr;
std::int32_t nbExpressions = 0;

bench::Call& write(bench::CallKind kind, std::int32_t a) {
    bench::Call& call = tape->calls.emplace_back();
    call.kind = kind;
    call.a = a;
    call.integer = 0;
    return call;
}

[[noreturn]] void refuse(const char* function) {
    throw std::logic_error(std::string(function) + " is not a call of linear or quadratic setup");
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
    return nbExpressions++;
}
int ls_create_int_constant(ls_solver*, int64_t value) {
    write(bench::CallKind::createIntConstant, 0).integer = value;
    return nbExpressions++;
}
int ls_create_double_constant(ls_solver*, double value) {
    write(bench::CallKind::createDoubleConstant, 0).real = value;
    return nbExpressions++;
}
void ls_expr_add_operand(ls_solver*, int expr, int operand) {
    write(bench::CallKind::addOperand, expr).b = operand;
}
void ls_expr_set_name(ls_solver*, int expr, const char* name) {
    write(bench::CallKind::setName, expr).b = static_cast<std::int32_t>(tape->names.size());
    tape->names.append(name).push_back('\0');
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

// The construction helpers and the callback refer to these; linear and quadratic setup does not
// call them.
int ls_expr_is_named(ls_solver*, int) {
    refuse("ls_expr_is_named");
}
int ls_expr_get_operator(ls_solver*, int) {
    refuse("ls_expr_get_operator");
}
int ls_expr_nb_operands(ls_solver*, int) {
    refuse("ls_expr_nb_operands");
}
int ls_expr_get_operand(ls_solver*, int, int) {
    refuse("ls_expr_get_operand");
}
void ls_stop(ls_solver*) {
    refuse("ls_stop");
}

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
    nbExpressions = 0;
    vex::NorvLocalSolver link;
    link.nmo = model;
    link.nev = environment;
    link.opt = options;
    link.solver = std::make_unique<localsolver::LocalSolver>();
    link.setupModel();
}

}  // extern "C"
