#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "translate/function_shapes.hpp"
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
    void combine(Opcode opcode);
    void combineWithVariable(Opcode opcode, std::int32_t field);
    void combineWithConstant(Opcode opcode, std::int32_t field);
    void call(std::int32_t function);
    void applyShape(const FunctionRow& row);
    void pushPower();
    void pushSignPower();
    void pushDistance();
    void pushPolynomial();

    [[nodiscard]] LSExpression variableOf(std::int32_t field);
    [[nodiscard]] double constantOf(std::int32_t field) const;
    LSExpression pop();
    void push(LSExpression e);
    [[nodiscard]] LSExpression integerConstant(std::int64_t value) const;
    [[nodiscard]] LSExpression doubleConstant(double value) const;
    [[nodiscard]] LSExpression make(ls_operator op, LSExpression x) const;
    [[nodiscard]] LSExpression make(ls_operator op, LSExpression x, LSExpression y) const;
    [[nodiscard]] localsolver::LSException malformed(const std::string& what) const;

    NorvLocalSolver& translator;
    localsolver::LSModel model;
    const double* pool;
    std::vector<LSExpression>& stack;
    std::size_t bottom;              ///< first entry of this list
    std::int32_t position = 0;       ///< of the instruction at work, from 0
    std::int32_t pendingCount = -1;  ///< announced arguments of the next call; -1: none
};

}  // namespace vex
