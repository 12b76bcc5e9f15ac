#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

#include "localsolver.h"

/// Object interface of the optimizer, header only, over the C functions of localsolver.h.
///
/// The classes are thin: handles hold a solver and an index, copying them copies no model. States,
/// threads and refusals are those of the C functions. Errors arrive as LSException when the
/// process's error hook throws it; a LocalSolver that creates its solver registers such a hook.

namespace localsolver {

using LSErrorCode = ls_error_code;
using LSCallbackType = ls_callback_type;
using LSObjectiveDirection = ls_objective_direction;
using LSOperator = ls_operator;
using LSSolutionStatus = ls_solution_status;
using LSState = ls_state;

/// An error of the optimizer or of its user. `what()` is the explanation alone.
class LSException : public std::exception {
public:
    LSException(LSErrorCode errorCode, std::string file, int lineNumber, std::string function,
                std::string text)
        : code_(errorCode),
          fileName_(std::move(file)),
          line_(lineNumber),
          functionName_(std::move(function)),
          explanation_(std::move(text)) {}

    /// The explanation; lives as long as the exception.
    [[nodiscard]] const char* what() const noexcept override { return explanation_.c_str(); }
    /// Codes other than those of ls_error_code are passed on as they came.
    [[nodiscard]] LSErrorCode getErrorCode() const { return code_; }
    /// Source file of the optimizer that raised the error, perhaps empty.
    [[nodiscard]] const std::string& getFileName() const { return fileName_; }
    /// From 1 in that file; 0: not known.
    [[nodiscard]] int getLineNumber() const { return line_; }
    /// The function that refused, "ls_close" for instance.
    [[nodiscard]] const std::string& getFunctionName() const { return functionName_; }

private:
    LSErrorCode code_;
    std::string fileName_;
    int line_;
    std::string functionName_;
    std::string explanation_;
};

/// One expression of a model: solver and index. Default: no expression (index -1).
///
/// A handle of 16 bytes; the solver owns the expression and outlives it. Functions are refused
/// (LS_ERROR_ARGUMENT) for an index that the model does not have. All are O(1) but where said.
class LSExpression {
public:
    LSExpression() = default;
    LSExpression(ls_solver* owner, std::int32_t position) : solver_(owner), index_(position) {}

    /// From 0 in the order of creation; -1: no expression.
    [[nodiscard]] std::int32_t getIndex() const { return index_; }
    /// The owner, borrowed; null for no expression.
    [[nodiscard]] ls_solver* getSolver() const { return solver_; }

    /// What it is; never changes. In any state.
    [[nodiscard]] LSOperator getOperator() const {
        return static_cast<LSOperator>(ls_expr_get_operator(solver_, index_));
    }
    /// Is it a bool, int or float decision, whose value the search chooses? In any state.
    [[nodiscard]] bool isDecision() const { return ls_expr_is_decision(solver_, index_) != 0; }
    /// Are its values doubles (else 64-bit integers)? That follows from the operator and the
    /// operands that it has so far. In any state.
    [[nodiscard]] bool isDouble() const { return ls_expr_is_double(solver_, index_) != 0; }
    /// Has it a label? In any state.
    [[nodiscard]] bool isNamed() const { return ls_expr_is_named(solver_, index_) != 0; }
    /// Empty without one. A copy. In any state.
    [[nodiscard]] std::string getName() const {
        const int length = ls_expr_get_name(solver_, index_, nullptr, 0);
        if (length <= 0) return {};
        std::string name(static_cast<std::size_t>(length), '\0');
        ls_expr_get_name(solver_, index_, name.data(), length);
        name.pop_back();  // the terminator
        return name;
    }
    /// A label, copied; never a key, several expressions may have the same. Modelling state.
    void setName(const char* name) const { ls_expr_set_name(solver_, index_, name); }

    /// As many as were added so far; the bounds of a decision count. In any state.
    [[nodiscard]] std::int32_t getNbOperands() const {
        return ls_expr_nb_operands(solver_, index_);
    }
    /// @param position  from 0, below getNbOperands().
    [[nodiscard]] LSExpression getOperand(std::int32_t position) const {
        return {solver_, ls_expr_get_operand(solver_, index_, position)};
    }
    /// Appends `operand`, in place: every holder of this expression sees it. Modelling state.
    /// Refused: an operand too many, of the wrong kind, or without meaning in this model; the
    /// expression is then as before.
    void addOperand(LSExpression operand) const {
        ls_expr_add_operand(solver_, index_, operand.index_);
    }

    /// Value of a constant in any state, or in the current solution once there has been a solve
    /// (paused or solved state). Refused with LS_ERROR_VALUE when the value is a double.
    [[nodiscard]] std::int64_t getIntValue() const {
        return ls_expr_get_int_value(solver_, index_);
    }
    /// The same for doubles; refused for integers.
    [[nodiscard]] double getDoubleValue() const {
        return ls_expr_get_double_value(solver_, index_);
    }
    /// The starting value of a bool or int decision, moved to the nearest one in its domain. Closed
    /// or solved state. Refused for float decisions.
    void setIntValue(std::int64_t value) const { ls_expr_set_int_value(solver_, index_, value); }
    /// The same for a float decision, and refused for others; NaN moves to the value nearest to 0.
    void setDoubleValue(double value) const { ls_expr_set_double_value(solver_, index_, value); }

    /// Same index; handles of different solvers are not told apart.
    friend bool operator==(LSExpression a, LSExpression b) { return a.index_ == b.index_; }

private:
    ls_solver* solver_ = nullptr;
    std::int32_t index_ = -1;
};

/// The model of a solver; a handle, the solver owns the model.
///
/// All that adds something requires the modelling state and is O(1) amortised; counts beyond
/// 2^31 - 1 are refused with LS_ERROR_LIMIT. Reading is allowed in any state.
class LSModel {
public:
    /// @param owner  borrowed; outlives the handle.
    explicit LSModel(ls_solver* owner) : solver_(owner) {}

    /// Without operands; they follow with addOperand().
    [[nodiscard]] LSExpression createExpression(LSOperator op) const {
        return {solver_, ls_create_expression(solver_, op)};
    }
    /// A new one at each call, also for a value that there is already.
    [[nodiscard]] LSExpression createConstant(std::int64_t value) const {
        return {solver_, ls_create_int_constant(solver_, value)};
    }
    /// Infinities are allowed, NaN is refused.
    [[nodiscard]] LSExpression createConstant(double value) const {
        return {solver_, ls_create_double_constant(solver_, value)};
    }
    /// `e` must be nonzero in every feasible point. Adding it twice is allowed.
    void addConstraint(LSExpression e) const { ls_add_constraint(solver_, e.getIndex()); }
    /// The first one added counts first; each further one breaks the ties of those before.
    void addObjective(LSExpression e, LSObjectiveDirection direction) const {
        ls_add_objective(solver_, e.getIndex(), direction);
    }
    /// Checks the whole model (too few operands, cycles) and ends the modelling state. An
    /// ill-formed model is refused with the reason and stays open. Without an objective a solve
    /// ends with the first feasible point. O(expressions + operands).
    void close() const { ls_close(solver_); }

    /// In any state, as all below.
    [[nodiscard]] std::int32_t getNbObjectives() const { return ls_nb_objectives(solver_); }
    /// @param position  from 0, in the order of adding.
    [[nodiscard]] LSExpression getObjective(std::int32_t position) const {
        return {solver_, ls_get_objective(solver_, position)};
    }
    [[nodiscard]] std::int32_t getNbConstraints() const { return ls_nb_constraints(solver_); }
    /// @param position  likewise.
    [[nodiscard]] LSExpression getConstraint(std::int32_t position) const {
        return {solver_, ls_get_constraint(solver_, position)};
    }

private:
    ls_solver* solver_;
};

/// The current solution of a solver; a handle. Paused or solved state: the values are those of the
/// best point, or of the least violated one while there is no feasible point.
class LSSolution {
public:
    /// @param owner  borrowed; outlives the handle.
    explicit LSSolution(ls_solver* owner) : solver_(owner) {}

    /// Optimal and inconsistent are proved.
    [[nodiscard]] LSSolutionStatus getStatus() const {
        return static_cast<LSSolutionStatus>(ls_get_solution_status(solver_));
    }
    /// Of an integer expression; refused for a double one.
    [[nodiscard]] std::int64_t getIntValue(LSExpression e) const {
        return ls_expr_get_int_value(solver_, e.getIndex());
    }
    /// Of a double expression; refused for an integer one.
    [[nodiscard]] double getDoubleValue(LSExpression e) const {
        return ls_expr_get_double_value(solver_, e.getIndex());
    }
    /// The value as a double whatever its type.
    [[nodiscard]] double getValue(LSExpression e) const {
        return e.isDouble() ? getDoubleValue(e) : static_cast<double>(getIntValue(e));
    }

private:
    ls_solver* solver_;
};

/// A solver: owned, or borrowed for the time of a callback.
///
/// One thread at a time uses a solver; several solvers are independent of each other. Parameters
/// are set in any state but running and paused.
class LocalSolver {
public:
    /// Creates a solver and registers a process-wide error hook that throws LSException.
    LocalSolver() : ownsSolver_(true) {
        ls_set_exception_callback(&throwException, nullptr);
        solver_ = ls_create_solver();
    }
    /// Wraps `wrapped`; deletes it at the end only when `isOwner`. Leaves the hook alone.
    LocalSolver(ls_solver* wrapped, bool isOwner) : solver_(wrapped), ownsSolver_(isOwner) {}
    LocalSolver(const LocalSolver&) = delete;
    LocalSolver& operator=(const LocalSolver&) = delete;
    ~LocalSolver() {
        if (ownsSolver_) ls_delete_solver(solver_);
    }

    /// For the C functions; borrowed.
    [[nodiscard]] ls_solver* getHandle() const { return solver_; }
    [[nodiscard]] LSState getState() const { return static_cast<LSState>(ls_get_state(solver_)); }
    [[nodiscard]] LSModel getModel() const { return LSModel(solver_); }
    [[nodiscard]] LSSolution getSolution() const { return LSSolution(solver_); }

    /// 0: silent; 1, the default: a line a tick on the standard output.
    void setVerbosity(int level) const { ls_set_verbosity(solver_, level); }
    /// At least 1. The same number, seed and iteration limit give the same result.
    void setNbThreads(int nbThreads) const { ls_set_nb_threads(solver_, nbThreads); }
    /// 0 or more.
    void setSeed(int seed) const { ls_set_seed(solver_, seed); }
    /// 0 (accepts nothing worse) to 9.
    void setAnnealingLevel(int level) const { ls_set_annealing_level(solver_, level); }
    /// Between two calls for LS_CALLBACK_ITERATION_TICKED; at least 1.
    void setIterationBetweenTicks(std::int64_t nbIterations) const {
        ls_set_iteration_between_ticks(solver_, nbIterations);
    }
    /// The search ends once the objective at `position` (from 0) is at least this good.
    void setObjectiveThreshold(int position, double threshold) const {
        ls_set_double_objective_threshold(solver_, position, threshold);
    }
    /// A stage of the search with limits of its own (ls_phase_set_time_limit, in whole seconds, and
    /// ls_phase_set_iteration_limit), which are none at first. A solve needs one at least.
    /// @return its number, from 0.
    [[nodiscard]] int addPhase() const { return ls_add_phase(solver_); }
    /// `callback` is called on the thread inside solve(), with the search paused. `userData` is
    /// handed through; the caller keeps it alive until the solver is gone.
    void addCallback(LSCallbackType type, ls_callback callback, void* userData) const {
        ls_add_callback(solver_, type, callback, userData);
    }
    /// Writes model and parameters as a file of the optimizer's own format, replacing it.
    /// LS_ERROR_FILE when that fails.
    void saveEnvironment(const char* fileName) const { ls_save_environment(solver_, fileName); }
    /// Searches until a proof, a limit or a stop; closed or solved state. What a callback throws
    /// leaves through here, with the solver in the solved state.
    void solve() const { ls_solve(solver_); }
    /// Ends the search soon; from any thread, in any state: outside a solve it does nothing. May be
    /// called repeatedly.
    void stop() const { ls_stop(solver_); }

    /// Of the last solve, or the one that is paused.
    [[nodiscard]] std::int64_t getNbIterations() const {
        return ls_stats_get_nb_iterations(solver_);
    }
    /// Seconds likewise, rounded down.
    [[nodiscard]] int getRunningTime() const { return ls_stats_get_running_time(solver_); }

private:
    [[noreturn]] static void throwException(int code, const char* explanation, const char* fileName,
                                            const char* functionName, int line,
                                            void* /*userData*/) {
        throw LSException(static_cast<LSErrorCode>(code), fileName, line, functionName,
                          explanation);
    }

    ls_solver* solver_ = nullptr;
    bool ownsSolver_;
};

/// Receives the events of a search.
class LSCallback {
public:
    virtual void callback(LocalSolver& solver, LSCallbackType type) = 0;
    virtual ~LSCallback() = default;

protected:
    LSCallback() = default;
    LSCallback(const LSCallback&) = default;
    LSCallback& operator=(const LSCallback&) = default;
};

}  // namespace localsolver
