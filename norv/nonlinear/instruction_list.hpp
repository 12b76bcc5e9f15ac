#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace norv {

/// The nonlinear part of one row or of the objective, in instruction code. Fields count variables
/// and pool entries from 1; those of opcodes that have no use for one are 0.
struct InstructionList {
    std::vector<std::int32_t> opcodes;
    std::vector<std::int32_t> fields;  ///< as many as opcodes
    std::int32_t depth = 0;            ///< entries that the evaluation stack needs room for

    void add(std::int32_t opcode, std::int32_t field = 0) {
        opcodes.push_back(opcode);
        fields.push_back(field);
    }
    [[nodiscard]] std::size_t size() const noexcept { return opcodes.size(); }
};

/// The verdict on a list.
struct ListCheck {
    std::string fault;       ///< which instruction is wrong and why; empty when all are right
    std::int32_t depth = 0;  ///< as in InstructionList
};

/// Is the list one that may be evaluated without looking? Known opcodes and functions, as many
/// arguments as each takes, variables and pool entries that exist, never more taken from the stack
/// than is there, one value left at the end. O(size).
///
/// A call names the count of its arguments: nlCallArg1 and nlCallArg2 by themselves, nlCallArgN
/// through the last nlFuncArgN before it, which edist and poly use up.
/// @param opcodes, fields  of equal length.
[[nodiscard]] ListCheck checkInstructions(std::span<const std::int32_t> opcodes,
                                          std::span<const std::int32_t> fields,
                                          std::int32_t nbVariables, std::int32_t nbPoolEntries);

/// Does the field of this opcode, which is one, name a variable?
[[nodiscard]] bool takesVariable(std::int32_t opcode) noexcept;

/// Adds coefficient * variable to the value that `list` computes.
/// @param variable   from 0.
/// @param poolEntry  of the coefficient, from 1; not read when the coefficient is 1 or -1.
void appendLinearTerm(InstructionList& list, std::int32_t variable, double coefficient,
                      std::int32_t poolEntry);

}  // namespace norv
