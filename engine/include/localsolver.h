#ifndef LOCALSOLVER_H
#define LOCALSOLVER_H

#include <stdint.h>

/**
 * C interface of the optimizer.
 *
 * A solver owns one model, an expression graph. Expressions are 32-bit indices from 0 in the order
 * of creation; -1 is no expression. Text results are fetched in two calls: with length 0 the
 * function returns the number of characters, the terminator included; with a buffer of that many
 * it writes the text (cut to `length`, always terminated) and returns the same number.
 *
 * States: a new solver is modelling. ls_close makes it closed, and only then ls_solve may be
 * called; it is running during the search, paused while a callback runs, and solved afterwards.
 * Each function states the states it requires; elsewhere it refuses.
 *
 * Errors: a refused call changes nothing and reports to the hook of ls_set_exception_callback as
 * its last step, with no lock held. The hook may throw; the exception leaves through the function.
 * When the hook returns or there is none, the function returns a neutral value (0, -1 or NULL).
 *
 * Threads: one solver is used from one thread at a time; solvers are independent of each other.
 * The hook is shared by the process. Callbacks run on the thread that is inside ls_solve.
 */

/* On Windows callers need no mark: functions are reached through the import library either way. */
#if defined(_WIN32) && defined(LOCALSOLVER_BUILD)
#define LS_API __declspec(dllexport)
#elif defined(_WIN32)
#define LS_API
#else
#define LS_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ls_solver ls_solver;

/** Operators of expressions; the numbers are part of the interface. */
typedef enum ls_operator {
    LS_OP_BOOL = 0,  /**< decision in {0, 1}, no operands */
    LS_OP_FLOAT = 1, /**< decision, operands: constants lower, upper bound */
    LS_OP_CONST = 2, /**< made by ls_create_int_constant, ls_create_double_constant */
    LS_OP_SUM = 3,   /**< any number of operands; empty: 0 */
    LS_OP_SUB = 4,
    LS_OP_PROD = 5, /**< any number of operands; empty: 1; an exact 0 times an infinity, or times
                       0 to a negative power, is 0 */
    LS_OP_MAX = 6,  /**< one operand or more */
    LS_OP_MIN = 7,  /**< one operand or more */
    LS_OP_EQ = 8,   /**< relations: exact between integers, within 1e-6 between doubles */
    LS_OP_NEQ = 9,
    LS_OP_GEQ = 10,
    LS_OP_LEQ = 11,
    LS_OP_GT = 12,
    LS_OP_LT = 13,
    LS_OP_IF = 14,  /**< condition, value if true, value if false */
    LS_OP_NOT = 15, /**< logic: nonzero is true */
    LS_OP_AND = 16, /**< empty: 1 */
    LS_OP_OR = 17,  /**< empty: 0 */
    LS_OP_XOR = 18, /**< parity; empty: 0 */
    LS_OP_ABS = 19,
    LS_OP_DIST = 20, /**< absolute difference of two operands */
    LS_OP_DIV = 21,
    LS_OP_MOD = 22,
    LS_OP_ARRAY = 23,
    LS_OP_AT = 24, /**< array, index from 0 */
    LS_OP_SCALARPROD = 25,
    LS_OP_CEIL = 26,
    LS_OP_FLOOR = 27,
    LS_OP_ROUND = 28, /**< halves away from zero */
    LS_OP_SQRT = 29,
    LS_OP_LOG = 30,
    LS_OP_EXP = 31,
    LS_OP_POW = 32,
    LS_OP_COS = 33,
    LS_OP_SIN = 34,
    LS_OP_TAN = 35,
    LS_OP_INT = 36 /**< decision, operands: constants lower, upper bound */
} ls_operator;

typedef enum ls_objective_direction { LS_MINIMIZE = 0, LS_MAXIMIZE = 1 } ls_objective_direction;

typedef enum ls_state {
    LS_STATE_MODELING = 1,
    LS_STATE_RUNNING = 2,
    LS_STATE_CLOSED = 3, /**< the model is closed and nothing is running */
    LS_STATE_PAUSED = 4,
    LS_STATE_SOLVED = 5
} ls_state;

typedef enum ls_solution_status {
    LS_STATUS_INCONSISTENT = 0, /**< proved: no feasible point exists */
    LS_STATUS_INFEASIBLE = 1,   /**< no feasible point found */
    LS_STATUS_FEASIBLE = 2,
    LS_STATUS_OPTIMAL = 3 /**< proved */
} ls_solution_status;

typedef enum ls_callback_type {
    LS_CALLBACK_PHASE_STARTED = 0,
    LS_CALLBACK_PHASE_ENDED = 1,
    LS_CALLBACK_DISPLAY = 2,
    LS_CALLBACK_TIME_TICKED = 3,
    LS_CALLBACK_ITERATION_TICKED = 4
} ls_callback_type;

typedef enum ls_error_code {
    LS_ERROR_INTERNAL = 0,
    LS_ERROR_STATE = 1,       /**< not allowed in the solver's state */
    LS_ERROR_CALLER = 2,      /**< raised by users of the interface, never by the engine */
    LS_ERROR_ARGUMENT = 3,    /**< index, range, operand count or operand type */
    LS_ERROR_LIMIT = 4,       /**< the model would pass a limit of the engine */
    LS_ERROR_FILE = 5,        /**< a file cannot be written */
    LS_ERROR_INTERRUPTED = 6, /**< ls_interrupt ended the solve */
    LS_ERROR_VALUE = 7,       /**< asked for a value of another type, or NaN given */
    LS_ERROR_MEMORY = 8
} ls_error_code;

/** Receives every error; may throw. The texts live until it returns or throws. */
typedef void (*ls_exception_callback)(int error_code, const char* explanation,
                                      const char* file_name, const char* function_name,
                                      int line_number, void* user_data);

/** Called on the thread inside ls_solve with the search paused. */
typedef void (*ls_callback)(ls_solver* solver, int type, void* user_data);

/* The library. */

/** Name, version and back ends of the engine. */
LS_API int ls_info(char* text, int length);
/** Registers the process-wide error hook; null removes it. */
LS_API void ls_set_exception_callback(ls_exception_callback hook, void* user_data);

/* Solvers. Any state unless stated. */

LS_API ls_solver* ls_create_solver(void);
/** Null is allowed. Refused while the solver is running or paused. */
LS_API void ls_delete_solver(ls_solver* solver);
LS_API int ls_get_state(ls_solver* solver);

/* Expressions: creation and operands require the modelling state. */

/** New expression of `op`, without operands. @return its index. */
LS_API int ls_create_expression(ls_solver* solver, int op);
LS_API int ls_create_int_constant(ls_solver* solver, int64_t value);
/** NaN is refused. */
LS_API int ls_create_double_constant(ls_solver* solver, double value);
/** Appends `operand` to `expr`. One too many, and one of a kind that the operator does not take (a
 * bound that is no constant, an array outside at and scalarprod), is refused here, too few by
 * ls_close. */
LS_API void ls_expr_add_operand(ls_solver* solver, int expr, int operand);
/** A label; need not be unique. Any state but running. The text is copied. */
LS_API void ls_expr_set_name(ls_solver* solver, int expr, const char* name);
LS_API int ls_expr_is_named(ls_solver* solver, int expr);
/** Refused for an expression without name. */
LS_API int ls_expr_get_name(ls_solver* solver, int expr, char* text, int length);
LS_API int ls_expr_get_operator(ls_solver* solver, int expr);
LS_API int ls_expr_nb_operands(ls_solver* solver, int expr);
/** Operand `position`, from 0, in the order of addition. */
LS_API int ls_expr_get_operand(ls_solver* solver, int expr, int position);
LS_API int ls_expr_is_decision(ls_solver* solver, int expr);
/** Nonzero when the value is a double: a double constant, a float decision, or computed so: div,
 * sqrt, log, exp, pow, cos, sin and tan always, relations, logic, ceil, floor and round never, the
 * rest when a (value) operand is. Of an operator expression only once the model is closed. */
LS_API int ls_expr_is_double(ls_solver* solver, int expr);
LS_API int ls_nb_expressions(ls_solver* solver);

/* Values. Constants in any state; other expressions but arrays in the states closed (of the
 * starting point), paused and solved. A double value may be asked of an integer expression, not the
 * reverse. An integer expression whose arithmetic left the 64-bit range reads as the nearest
 * integer, one that is not defined at the point as 0. While a decision has an empty domain every
 * constraint reads 0. */

LS_API int64_t ls_expr_get_int_value(ls_solver* solver, int expr);
LS_API double ls_expr_get_double_value(ls_solver* solver, int expr);
/** Starting value of a decision, moved to the nearest value of its domain (NaN: nearest to 0).
 * States closed and solved. The double form is refused for boolean and integer decisions, the
 * integer form for float decisions. */
LS_API void ls_expr_set_int_value(ls_solver* solver, int expr, int64_t value);
LS_API void ls_expr_set_double_value(ls_solver* solver, int expr, double value);

/* The model. Adding and closing require the modelling state. */

/** `expr` must hold (be nonzero) in every feasible point. Adding it twice is allowed. */
LS_API void ls_add_constraint(ls_solver* solver, int expr);
/** The first objective has the highest priority. `direction`: ls_objective_direction. */
LS_API void ls_add_objective(ls_solver* solver, int expr, int direction);
LS_API int ls_nb_constraints(ls_solver* solver);
LS_API int ls_get_constraint(ls_solver* solver, int position);
LS_API int ls_nb_objectives(ls_solver* solver);
LS_API int ls_get_objective(ls_solver* solver, int position);
LS_API int ls_get_objective_direction(ls_solver* solver, int position);
/** Checks the model (too few operands, cycles, arrays of a scalar product of different lengths) and
 * freezes it; an ill-formed model stays open. A model without objective is allowed:
 * it is solved when a feasible point is known. */
LS_API void ls_close(ls_solver* solver);

/* Parameters: any state but running and paused. */

/** 0: silent, 1: a line a tick on standard output. Default 1. */
LS_API void ls_set_verbosity(ls_solver* solver, int level);
/** 1 to 1024; 0 takes the number of processors. Default 0. */
LS_API void ls_set_nb_threads(ls_solver* solver, int nb_threads);
/** 0 or more. Default 0. */
LS_API void ls_set_seed(ls_solver* solver, int seed);
/** 0 (pure descent) to 9. Default 1. */
LS_API void ls_set_annealing_level(ls_solver* solver, int level);
/** 1 or more. Default 10000. */
LS_API void ls_set_iteration_between_ticks(ls_solver* solver, int64_t nb_iterations);
/** 1 second or more. Default 1. */
LS_API void ls_set_time_between_ticks(ls_solver* solver, int seconds);
/** The search ends when objective `position` is at least this good in a feasible point. */
LS_API void ls_set_double_objective_threshold(ls_solver* solver, int position, double threshold);
/** Adds a phase; states closed and solved. @return its index, from 0. */
LS_API int ls_add_phase(ls_solver* solver);
/** Seconds, 0 or more. Default 2^31 - 1. */
LS_API void ls_phase_set_time_limit(ls_solver* solver, int phase, int seconds);
LS_API int ls_phase_get_time_limit(ls_solver* solver, int phase);
/** 0 or more. Default 2^63 - 1. */
LS_API void ls_phase_set_iteration_limit(ls_solver* solver, int phase, int64_t nb_iterations);
LS_API int64_t ls_phase_get_iteration_limit(ls_solver* solver, int phase);
/** Writes model, parameters and phases to a text file; states closed and solved. */
LS_API void ls_save_environment(ls_solver* solver, const char* file_name);

/* Solving. */

/** `callback` runs at every event of `type`; several are called in the order of addition. What it
 * throws ends the solve and leaves through ls_solve. Any state but running and paused. */
LS_API void ls_add_callback(ls_solver* solver, int type, ls_callback callback, void* user_data);
/** Runs the phases in order; states closed and solved, at least one phase. */
LS_API void ls_solve(ls_solver* solver);
/** Ends the search soon; from any thread, any state: outside a solve it does nothing. May be called
 * repeatedly. */
LS_API void ls_stop(ls_solver* solver);
/** Ends the search; ls_solve then reports `text` as an error. States running and paused. */
LS_API void ls_interrupt(ls_solver* solver, const char* text);
/** ls_solution_status; states closed (judges the starting point), paused and solved. */
LS_API int ls_get_solution_status(ls_solver* solver);

/* Statistics and texts; any state but running. Totals over all phases of the last solve. */

LS_API int64_t ls_stats_get_nb_iterations(ls_solver* solver);
/** Whole seconds, rounded down. */
LS_API int ls_stats_get_running_time(ls_solver* solver);
/** One line: iterations, moves, accepted and improving moves. */
LS_API int ls_stats_info(ls_solver* solver, char* text, int length);
/** One line: seconds, iterations, feasibility and objectives of the best point. */
LS_API int ls_solver_info(ls_solver* solver, char* text, int length);
/** Several lines: sizes of the model, parameters, phases. */
LS_API int ls_solver_to_string(ls_solver* solver, char* text, int length);

#ifdef __cplusplus
}
#endif

#endif
