#pragma once

#include <cstdint>
#include <span>
#include <vector>

/// The host's postfix instruction code for nonlinear parts of rows.

namespace norv {

/// One row's list. Fields count variables and pool entries from 1.
struct InstructionList {
    std::vector<std::int32_t> opcodes;
    std::vector<std::int32_t> fields;  ///< as many as opcodes

    void add(std::int32_t opcode, std::int32_t field = 0) {
        opcodes.push_back(opcode);
        fields.push_back(field);
    }
};

/// Does the field of this opcode name a variable?
[[nodiscard]] bool takesVariable(std::int32_t opcode) noexcept;

/// Adds coefficient * variable to the value that `list` computes.
/// @param variable  from 0.
/// @param pool      receives the coefficient.
void appendLinearTerm(InstructionList& list, std::int32_t variable, double coefficient,
                      std::vector<double>& pool);

/// The value that `list` computes at `point`; adds what goes wrong to `nbErrors`.
[[nodiscard]] double evaluateInstructions(const InstructionList& list, std::span<const double> pool,
                                          std::span<const double> point, std::int32_t& nbErrors);

}  // namespace norv
