#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>

#include "localsolver.h"

/// Helpers of the tests that drive the optimizer through its C functions.
namespace lstest {

/// What the error hook received last.
struct Refused {
    int code = -1;  ///< -1: nothing was refused
    std::string text;
    std::string function;
    std::string file;
    int line = 0;
};

/// Registers a hook that records and returns; removes it at the end.
class RecordingHook {
public:
    RecordingHook() { ls_set_exception_callback(&record, this); }
    RecordingHook(const RecordingHook&) = delete;
    RecordingHook& operator=(const RecordingHook&) = delete;
    ~RecordingHook() { ls_set_exception_callback(nullptr, nullptr); }

    /// The refusal since the last call of this, if any.
    Refused take() { return std::exchange(last_, Refused{}); }

private:
    static void record(int code, const char* text, const char* file, const char* function, int line,
                       void* self) {
        static_cast<RecordingHook*>(self)->last_ = {code, text, function, file, line};
    }
    Refused last_;
};

struct SolverDeleter {
    void operator()(ls_solver* solver) const { ls_delete_solver(solver); }
};
using SolverHandle = std::unique_ptr<ls_solver, SolverDeleter>;

inline SolverHandle makeSolver() {
    SolverHandle solver(ls_create_solver());
    ls_set_verbosity(solver.get(), 0);
    return solver;
}

inline int constant(ls_solver* s, int value) {
    return ls_create_int_constant(s, value);
}
inline int constant(ls_solver* s, std::int64_t value) {
    return ls_create_int_constant(s, value);
}
inline int constant(ls_solver* s, double value) {
    return ls_create_double_constant(s, value);
}

inline int expression(ls_solver* s, int op, std::initializer_list<int> operands = {}) {
    const int e = ls_create_expression(s, op);
    for (const int operand : operands) ls_expr_add_operand(s, e, operand);
    return e;
}

template <class Bound>
int decision(ls_solver* s, int op, Bound lower, Bound upper) {
    const int l = constant(s, lower);
    const int u = constant(s, upper);
    return expression(s, op, {l, u});
}

template <class Fetch>
std::string text(Fetch fetch) {
    std::string result(static_cast<std::size_t>(fetch(nullptr, 0)), '\0');
    fetch(result.data(), static_cast<int>(result.size()));
    if (!result.empty()) result.pop_back();
    return result;
}

/// maximise x + y over integers x, y in [0, 10] with x + 2 y <= 14, not yet closed.
/// Its optimum is 12, at x = 10, y = 2.
struct SmallModel {
    int x;
    int y;
    int sum;
    int row;

    explicit SmallModel(ls_solver* s)
        : x(decision(s, LS_OP_INT, 0, 10)),
          y(decision(s, LS_OP_INT, 0, 10)),
          sum(expression(s, LS_OP_SUM, {x, y})),
          row(expression(
              s, LS_OP_LEQ,
              {expression(s, LS_OP_SUM, {x, expression(s, LS_OP_PROD, {y, constant(s, 2)})}),
               constant(s, 14)})) {
        ls_add_constraint(s, row);
        ls_add_objective(s, sum, LS_MAXIMIZE);
    }
};

/// Closes the model and adds a phase with these limits. @return the phase.
inline int closeWithLimits(ls_solver* s, int seconds, std::int64_t iterations) {
    ls_close(s);
    const int phase = ls_add_phase(s);
    ls_phase_set_time_limit(s, phase, seconds);
    ls_phase_set_iteration_limit(s, phase, iterations);
    return phase;
}

/// A model that nothing proves: minimise a wavy function of 3 floats, from 0 down to about -12.
struct EndlessModel {
    int objective;

    /// @param maximises  the opposite, from 0 up to about 12.
    explicit EndlessModel(ls_solver* s, bool maximises = false) {
        objective = ls_create_expression(s, LS_OP_SUM);
        for (int k = 0; k < 3; ++k) {
            const int x = decision(s, LS_OP_FLOAT, -10.0, 10.0);
            const int wave =
                expression(s, LS_OP_SIN, {expression(s, LS_OP_PROD, {x, constant(s, 3.7)})});
            ls_expr_add_operand(s, objective, expression(s, LS_OP_PROD, {wave, x}));
            const int square = expression(s, LS_OP_POW, {x, constant(s, 2)});
            ls_expr_add_operand(s, objective,
                                expression(s, LS_OP_PROD, {square, constant(s, 0.1)}));
        }
        if (maximises) objective = expression(s, LS_OP_PROD, {objective, constant(s, -1)});
        ls_add_objective(s, objective, maximises ? LS_MAXIMIZE : LS_MINIMIZE);
    }
};

}  // namespace lstest
