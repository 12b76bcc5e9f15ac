#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

#include "defvars/defined_variables.hpp"
#include "host/codes.hpp"
#include "localsolver.hpp"
#include "translate/built_expression.hpp"
#include "translate/constant_registry.hpp"
#include "translate/row_buffers.hpp"

/// The translator: from the host's model instance to a closed LocalSolver model.
///
/// May use the host's operations, the defined-variable maps and the optimizer's interface. Called
/// by the entry points (creation, setup, destruction) and the solve driver, on the host's thread.

namespace vex {

class SolveTrace;

/// The nesting of row functions has passed NorvLocalSolver::deepestNesting.
class RecursionDepthLimitReached {};

/// One link object: the handles of one host instance and of one LocalSolver instance.
///
/// Its address is the handle that the host holds. States:
/// - created: all handles null, nothing built;
/// - handles set: `nmo`, `nev`, `opt` and `solver` are set, the solver is fresh; required by
///   `setupModel`;
/// - set up: `setupModel` has returned, the model is closed, `variables`, `constraints` and
///   `objectives` say what became of the instance.
/// When `setupModel` throws, the model stays partly built: it may run again after the caller has
/// set a fresh `solver` and called `resetTranslation`.
///
/// Errors: LSException with code 2, file name "nlocalsolver" and the method's qualified name for
/// the link's own errors; the optimizer's errors pass through with their own codes.
class NorvLocalSolver : public localsolver::LSCallback {
public:
    using LSExpression = localsolver::LSExpression;
    using LSOperator = localsolver::LSOperator;

    /// Row functions nest one level per defined variable of a chain; so deep is allowed.
    static constexpr std::int32_t deepestNesting = 150;

    NorvLocalSolver() = default;
    NorvLocalSolver(const NorvLocalSolver&) = delete;
    NorvLocalSolver& operator=(const NorvLocalSolver&) = delete;

    /// What happens at an event of the search, with the search paused; may throw.
    using SearchEventHandler = void (*)(NorvLocalSolver&, localsolver::LSCallbackType);

    /// Receives the events of the search and hands them to `onSearchEvent`.
    /// @throws std::logic_error when that is not set.
    void callback(localsolver::LocalSolver& search, localsolver::LSCallbackType type) override;
    /// Deletes the LocalSolver instance and then, when `ownsOptions`, the option object.
    ~NorvLocalSolver() override;

    /// Empties what an earlier setup left: the maps, `varsInProgress`, the expression arrays and
    /// the constant registries. Call before every `setupModel`.
    void resetTranslation();

    /// Builds, adds and closes the whole model: objective first, then one constraint per row.
    /// @throws LSException, RecursionDepthLimitReached; rows before the failing one stay added.
    void setupModel();

    /// The expression of variable `j`, 0-based, made on first use and the same ever after.
    /// A decision with the variable's bounds, or the definition of a defined variable.
    LSExpression getVariable(std::int32_t j) {
        const LSExpression known = variables[static_cast<std::size_t>(j)];
        return isBuilt(known) ? known : makeVariable(j);
    }

    /// The function of `row` (0-based, -1: the objective) without its right-hand side: a new sum of
    /// linear terms, then quadratic terms, in the host's order, then the nonlinear part.
    /// @param buffers     grown when the row needs more room.
    /// @param definedVar  -1, or the variable whose linear term is left out.
    /// @param coefOut     receives that term's coefficient; unused when `definedVar` is -1.
    LSExpression makeFunction(std::int32_t row, RowBuffers& buffers, std::int32_t definedVar,
                              double* coefOut);

    /// The value that a postfix instruction list computes, as an expression.
    /// @param opcodes, fields  [nbInstructions]; fields count variables and pool entries from 1.
    /// @param pool             the host's constants.
    /// @throws LSException for opcodes and functions without a counterpart and for lists that are
    ///         not well formed.
    LSExpression convertExpression(std::int32_t nbInstructions, const std::int32_t* opcodes,
                                   const std::int32_t* fields, const double* pool);

    /// Adds every variable of the linear objective as an objective of its own, the one with the
    /// largest absolute coefficient first (of equal ones the variable with the larger index), in
    /// the direction that the coefficient's sign asks for. Fills `objectives`.
    /// @throws LSException for an objective that is not linear.
    void makeHierarchicalObjectives(RowBuffers& buffers);

    /// Gives the host's levels to the decisions as starting values, integers cut toward zero. The
    /// model must be closed.
    void setupStartingPoint();

    /// Registered constant of `value`: an integer when it is integral, else a double.
    LSExpression makeConstant(double value);
    /// Registered integer constant.
    LSExpression makeIntConstant(std::int64_t value);
    /// The registered value of constant `e`. @throws LSException when it was never registered.
    [[nodiscard]] double getConstantValue(LSExpression e) const;

    /// k · x, appended to a product in place when `extendable` says that the caller holds the only
    /// use of `x`; constants are folded.
    LSExpression scaleExpression(LSExpression x, bool extendable, double k);

    /// a · x + b · y + c as one flat sum; `x` and `y` may be empty. Sums whose flag says that the
    /// caller holds their only use are extended in place, never those that are named or stand for
    /// a variable.
    LSExpression makeLinearCombination(double a, LSExpression x, bool xExtendable, double b,
                                       LSExpression y, bool yExtendable, double c);

    /// op(x, y) for an associative and commutative `op`, merging operand lists where the flags
    /// allow it.
    LSExpression makeFlatExpression(LSOperator op, LSExpression x, bool xExtendable, LSExpression y,
                                    bool yExtendable);

    ModelHandle nmo = nullptr;        ///< the host's
    EnvironmentHandle nev = nullptr;  ///< the host's
    OptionHandle opt = nullptr;       ///< the link's when `ownsOptions`
    bool ownsOptions = false;
    std::unique_ptr<localsolver::LocalSolver> solver;
    std::vector<LSExpression> variables;    ///< [nmoN] not built until used
    std::vector<LSExpression> constraints;  ///< [nmoM] not built for a row that defines a variable
    std::vector<LSExpression> objectives;   ///< in the order of their addition to the model
    std::int32_t nbObjectives = 0;          ///< size of `objectives`
    DefinedVariables definedVariables;
    DefiningEquations definingEquations;
    std::int32_t nbLowerClamped = 0;        ///< variables whose lower bound -infinity was replaced
    std::int32_t nbUpperClamped = 0;        ///< variables whose upper bound +infinity was replaced
    std::int32_t setupDepth = 0;            ///< nesting of `makeFunction`
    std::set<std::int32_t> varsInProgress;  ///< defined variables being built at the moment
    char textBuf[1024] = {};                ///< scratch for the host's texts
    bool interrupted = false;               ///< the host asked to stop the search
    SearchEventHandler onSearchEvent = nullptr;   ///< set by the solve driver before a search
    SolveTrace* trace = nullptr;                  ///< the open solve trace, the driver's; or null
    ConstantRegistry<std::int64_t> intConstants;  ///< empty outside `setupModel`
    ConstantRegistry<double> doubleConstants;     ///< empty outside `setupModel`

private:
    struct RowStatistics {
        std::int32_t nbEntries = 0;    ///< of the sparse part, linear and nonlinear
        std::int32_t nbQuadratic = 0;  ///< pairs
        std::int32_t nbNonlinear = 0;  ///< entries
    };

    /// For messages. They use `textBuf`: definitions nest, and buffers would fill the stack.
    [[nodiscard]] std::string nameOfVariable(std::int32_t j);
    [[nodiscard]] std::string nameOfEquation(std::int32_t i);

    void findDefinitions();
    void addObjective(RowBuffers& buffers);
    void addRow(std::int32_t i, RowBuffers& buffers);
    void warnOfClampedBounds() const;

    LSExpression makeVariable(std::int32_t j);
    void decideVariable(std::int32_t j);
    void defineVariable(std::int32_t j, std::int32_t equation);

    [[nodiscard]] RowStatistics rowStatistics(std::int32_t row) const;
    void fetchSparsePart(std::int32_t row, RowBuffers& buffers, RowStatistics& statistics) const;
    bool addLinearTerms(LSExpression sum, const RowBuffers& buffers, std::int32_t nbEntries,
                        std::int32_t definedVar, double* coefOut);
    void addQuadraticTerms(LSExpression sum, std::int32_t row, const RowBuffers& buffers,
                           std::int32_t nbPairs);
    LSExpression addNonlinearPart(LSExpression sum, std::int32_t row, RowBuffers& buffers);
    [[nodiscard]] double objectiveFactor() const;
    [[nodiscard]] std::int32_t orderOf(std::int32_t row) const;

    /// May an operand be appended to `e`? Not when `e` stands for a variable, whatever the flag.
    [[nodiscard]] bool mayGrow(LSExpression e, bool extendable) const;
    LSExpression scaleConstant(LSExpression x, double k);
    LSExpression addUp(LSExpression x, bool xExtendable, LSExpression y, bool yExtendable,
                       double c);

    /// Indices of the expressions that stand for defined variables. The others in `variables` are
    /// decisions, which take no further operands anyway.
    std::unordered_set<std::int32_t> definingExpressions_;

    /// Shared by the conversions of instruction lists, which may nest; empty between rows.
    std::vector<LSExpression> conversionStack_;
};

}  // namespace vex
