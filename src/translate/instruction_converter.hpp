#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/instruction_code.hpp"
#include "localsolver.h"
#include "translate/nlocalsolver.hpp"

namespace vex {

/// Runs one instruction list on a stack of expressions instead of numbers.
///
/// The stack is the translator's and shared: a definition that is built in the middle of a list
/// runs on top of the entries of the list that needs it. An object sees only the entries above
/// those it found, and leaves none behind, also when it throws.
class InstructionConverter {
public:
    using LSExpression = localsolver::LSExpression;

    /// @param stack  outlives this object.
    /// @param pool   the host's constants; fields count them from 1.
    InstructionConverter(NorvLocalSolver& translator, std::vector<LSExpression>& stack,
                         const double* pool);
    InstructionConverter(const InstructionConverter&) = delete;
    InstructionConverter& operator=(const InstructionConverter&) = delete;
    ~InstructionConverter();

    /// @param opcodes, fields  [nbInstructions]
    /// @return the entry at the bottom of this list's stack.
    /// @throws LSException with code 2 for what the translation does not accept.
    LSExpression convert(std::int32_t nbInstructions, const std::int32_t* opcodes,
                         const std::int32_t* fields);

private:
    void execute(std::int32_t opcode, std::int32_t field);
    void pushSum(double factor, LSExpression x, LSExpression y, bool yExtendable);
    void pushProduct(LSExpression x, LSExpression y, bool yExtendable);
    void combineWithVariable(ls_operator op, std::int32_t field);
    void addConstant(double c);
    void subtractConstant(double c);
    void scaleTop(double factor);

    /// One rule a function, in function_calls.cpp.
    struct FunctionRules;
    void call(std::int32_t function);
    template <ls_operator op>
    void pushUnary();  ///< op(x)
    template <ls_operator op>
    void pushBinary();  ///< op(x, y)
    template <ls_operator op>
    void pushFlat();  ///< op flattened, the first argument first
    template <ls_operator op>
    void pushFlatLastFirst();
    void pushPi();
    void pushSquare();  ///< x · x
    void pushDecimalLogarithm();
    void pushBinaryLogarithm();
    void pushScaledLogarithm(double factor);
    void pushImplication();  ///< or(not x, y)
    void pushChoice();       ///< if(x, y, z)
    void pushPower();        ///< pow(x, y)
    void pushSignPower();    ///< x · pow(|x|, y - 1)
    void pushDistance();     ///< square root of the sum of the arguments' squares
    void pushPolynomial();   ///< coefficients after the base, lowest power first

    [[nodiscard]] LSExpression variableOf(std::int32_t field);
    [[nodiscard]] double constantOf(std::int32_t field) const;
    LSExpression pop();
    void push(LSExpression e);
    [[nodiscard]] LSExpression integerConstant(std::int64_t value) const;
    [[nodiscard]] LSExpression doubleConstant(double value) const;
    [[nodiscard]] LSExpression make(ls_operator op, LSExpression x) const;
    [[nodiscard]] LSExpression make(ls_operator op, LSExpression x, LSExpression y) const;
    [[nodiscard]] localsolver::LSException malformed(const std::string& what) const;

    NorvLocalSolver& translator_;
    localsolver::LSModel model_;
    const double* pool_;
    std::vector<LSExpression>& stack_;
    std::size_t bottom_;              ///< first entry of this list
    std::int32_t position_ = 0;       ///< of the instruction at work, from 0
    std::int32_t pendingCount_ = -1;  ///< announced arguments of the next call; -1: none
};

template <ls_operator op>
void InstructionConverter::pushBinary() {
    const LSExpression y = pop();
    const LSExpression x = pop();
    push(make(op, x, y));
}

}  // namespace vex
