#include <cmath>
#include <limits>

#include "api/contract.hpp"
#include "model/operator_table.hpp"

using namespace engine;
using namespace engine::contract;

namespace {

/// Value of a constant in any state, of other expressions where there is a current point.
Value requireValue(ls_solver* solver, int expr, RefusalSite site = RefusalSite::here()) {
    Solver& s = requireState(solver, anyState, site);
    const ls_operator op = s.model.operatorOf(requireExpression(s, expr, site));
    if (op == LS_OP_CONST) return s.model.constantOf(expr);
    requireState(solver, withValues, site);
    if (op == LS_OP_ARRAY) {
        throw Refusal(LS_ERROR_VALUE,
                      formatText("expression %d is an array, only its operands have values", expr),
                      site);
    }
    return s.solution().valueOf(expr);
}

/// An integer expression holds a double when its arithmetic left the 64-bit range, and NaN when it
/// is not defined at the point: that reads as the nearest integer and as 0.
std::int64_t saturated(Value value) {
    if (value.isInt()) return value.asInt();
    const double x = value.asDouble();
    if (std::isnan(x)) return 0;
    if (x >= 0x1p63) return std::numeric_limits<std::int64_t>::max();
    if (x < -0x1p63) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(x);
}

/// The decision of an expression that is one.
DecisionIndex requireDecision(const Solver& s, int expr, RefusalSite site = RefusalSite::here()) {
    const ls_operator op = s.model.operatorOf(requireExpression(s, expr, site));
    if (!isDecisionOperator(op)) {
        throw Refusal(LS_ERROR_ARGUMENT,
                      formatText("expression %d (%s) is no decision, only decisions take values",
                                 expr, operatorInfo(op).name.data()),
                      site);
    }
    return s.model.closed().decisionOf[static_cast<std::size_t>(expr)];
}

}  // namespace

int64_t ls_expr_get_int_value(ls_solver* solver, int expr) {
    return guarded(__func__, std::int64_t{0}, [&] {
        const Value value = requireValue(solver, expr);
        if (solver->core.model.isDouble(expr)) {
            throw Refusal(LS_ERROR_VALUE,
                          formatText("expression %d is a double, ask for its double value", expr));
        }
        return saturated(value);
    });
}

double ls_expr_get_double_value(ls_solver* solver, int expr) {
    return guarded(__func__, 0.0, [&] { return requireValue(solver, expr).asDouble(); });
}

void ls_expr_set_int_value(ls_solver* solver, int expr, int64_t value) {
    guarded(__func__, [&] {
        Solver& s = requireState(solver, closedOrSolved);
        const DecisionIndex d = requireDecision(s, expr);
        if (!s.model.closed().isDiscrete(d)) {
            throw Refusal(LS_ERROR_VALUE,
                          formatText("decision %d is a float, it takes a double value", expr));
        }
        s.solution().setDecision(d, Value::ofInt(value));
    });
}

void ls_expr_set_double_value(ls_solver* solver, int expr, double value) {
    guarded(__func__, [&] {
        Solver& s = requireState(solver, closedOrSolved);
        const DecisionIndex d = requireDecision(s, expr);
        if (s.model.closed().isDiscrete(d)) {
            throw Refusal(LS_ERROR_VALUE,
                          formatText("decision %d is an integer, it takes an integer value", expr));
        }
        s.solution().setDecision(d, Value::ofDouble(value));
    });
}
