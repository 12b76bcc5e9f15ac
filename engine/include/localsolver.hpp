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

    [[nodiscard]] const char* what() const noexcept override { return explanation_.c_str(); }
    [[nodiscard]] LSErrorCode getErrorCode() const { return code_; }
    [[nodiscard]] const std::string& getFileName() const { return fileName_; }
    [[nodiscard]] int getLineNumber() const { return line_; }
    [[nodiscard]] const std::string& getFunctionName() const { return functionName_; }

private:
    LSErrorCode code_;
    std::string fileName_;
    int line_;
    std::string functionName_;
    std::string explanation_;
};

/// One expression of a model: solver and index. Default: no expression (index -1).
class LSExpression {
public:
    LSExpression() = default;
    LSExpression(ls_solver* owner, std::int32_t position) : solver_(owner), index_(position) {}

    [[nodiscard]] std::int32_t getIndex() const { return index_; }
    [[nodiscard]] ls_solver* getSolver() const { return solver_; }

    [[nodiscard]] LSOperator getOperator() const {
        return static_cast<LSOperator>(ls_expr_get_operator(solver_, index_));
    }
    [[nodiscard]] bool isDecision() const { return ls_expr_is_decision(solver_, index_) != 0; }
    [[nodiscard]] bool isDouble() const { return ls_expr_is_double(solver_, index_) != 0; }
    [[nodiscard]] bool isNamed() const { return ls_expr_is_named(solver_, index_) != 0; }
    [[nodiscard]] std::string getName() const {
        const int length = ls_expr_get_name(solver_, index_, nullptr, 0);
        if (length <= 0) return {};
        std::string name(static_cast<std::size_t>(length), '\0');
        ls_expr_get_name(solver_, index_, name.data(), length);
        name.pop_back();  // the terminator
        return name;
    }
    void setName(const char* name) const { ls_expr_set_name(solver_, index_, name); }

    [[nodiscard]] std::int32_t getNbOperands() const {
        return ls_expr_nb_operands(solver_, index_);
    }
    [[nodiscard]] LSExpression getOperand(std::int32_t position) const {
        return {solver_, ls_expr_get_operand(solver_, index_, position)};
    }
    /// Appends `operand`, in place: every holder of this expression sees it.
    void addOperand(LSExpression operand) const {
        ls_expr_add_operand(solver_, index_, operand.index_);
    }

    /// Value of a constant, or of the current solution.
    [[nodiscard]] std::int64_t getIntValue() const {
        return ls_expr_get_int_value(solver_, index_);
    }
    [[nodiscard]] double getDoubleValue() const {
        return ls_expr_get_double_value(solver_, index_);
    }
    void setIntValue(std::int64_t value) const { ls_expr_set_int_value(solver_, index_, value); }
    void setDoubleValue(double value) const { ls_expr_set_double_value(solver_, index_, value); }

    friend bool operator==(LSExpression a, LSExpression b) { return a.index_ == b.index_; }

private:
    ls_solver* solver_ = nullptr;
    std::int32_t index_ = -1;
};

/// The model of a solver; a handle, the solver owns the model.
class LSModel {
public:
    explicit LSModel(ls_solver* owner) : solver_(owner) {}

    [[nodiscard]] LSExpression createExpression(LSOperator op) const {
        return {solver_, ls_create_expression(solver_, op)};
    }
    [[nodiscard]] LSExpression createConstant(std::int64_t value) const {
        return {solver_, ls_create_int_constant(solver_, value)};
    }
    [[nodiscard]] LSExpression createConstant(double value) const {
        return {solver_, ls_create_double_constant(solver_, value)};
    }
    void addConstraint(LSExpression e) const { ls_add_constraint(solver_, e.getIndex()); }
    void addObjective(LSExpression e, LSObjectiveDirection direction) const {
        ls_add_objective(solver_, e.getIndex(), direction);
    }
    void close() const { ls_close(solver_); }

    [[nodiscard]] std::int32_t getNbObjectives() const { return ls_nb_objectives(solver_); }
    [[nodiscard]] LSExpression getObjective(std::int32_t position) const {
        return {solver_, ls_get_objective(solver_, position)};
    }
    [[nodiscard]] std::int32_t getNbConstraints() const { return ls_nb_constraints(solver_); }
    [[nodiscard]] LSExpression getConstraint(std::int32_t position) const {
        return {solver_, ls_get_constraint(solver_, position)};
    }

private:
    ls_solver* solver_;
};

/// The current solution of a solver; a handle.
class LSSolution {
public:
    explicit LSSolution(ls_solver* owner) : solver_(owner) {}

    [[nodiscard]] LSSolutionStatus getStatus() const {
        return static_cast<LSSolutionStatus>(ls_get_solution_status(solver_));
    }
    [[nodiscard]] std::int64_t getIntValue(LSExpression e) const {
        return ls_expr_get_int_value(solver_, e.getIndex());
    }
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

    [[nodiscard]] ls_solver* getHandle() const { return solver_; }
    [[nodiscard]] LSState getState() const { return static_cast<LSState>(ls_get_state(solver_)); }
    [[nodiscard]] LSModel getModel() const { return LSModel(solver_); }
    [[nodiscard]] LSSolution getSolution() const { return LSSolution(solver_); }

    void setVerbosity(int level) const { ls_set_verbosity(solver_, level); }
    void setNbThreads(int nbThreads) const { ls_set_nb_threads(solver_, nbThreads); }
    void setSeed(int seed) const { ls_set_seed(solver_, seed); }
    void setAnnealingLevel(int level) const { ls_set_annealing_level(solver_, level); }
    void setIterationBetweenTicks(std::int64_t nbIterations) const {
        ls_set_iteration_between_ticks(solver_, nbIterations);
    }
    void setObjectiveThreshold(int position, double threshold) const {
        ls_set_double_objective_threshold(solver_, position, threshold);
    }
    [[nodiscard]] int addPhase() const { return ls_add_phase(solver_); }
    void addCallback(LSCallbackType type, ls_callback callback, void* userData) const {
        ls_add_callback(solver_, type, callback, userData);
    }
    void saveEnvironment(const char* fileName) const { ls_save_environment(solver_, fileName); }
    void solve() const { ls_solve(solver_); }
    void stop() const { ls_stop(solver_); }

    [[nodiscard]] std::int64_t getNbIterations() const {
        return ls_stats_get_nb_iterations(solver_);
    }
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
