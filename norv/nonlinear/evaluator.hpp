#pragma once

#include <span>
#include <vector>

#include "nonlinear/instruction_list.hpp"
#include "nonlinear/quantity.hpp"
#include "norv/leniency.hpp"

namespace norv {

/// Computes the values of instruction lists. Keeps its stack from one list to the next; one thread
/// at a time.
class Evaluator {
public:
    /// @param list   passed `checkInstructions`; its depth is set.
    /// @param pool   of the model.
    /// @param point  [nbVariables]
    /// @param leniency  null: relations are exact.
    [[nodiscard]] Quantity evaluate(const InstructionList& list, std::span<const double> pool,
                                    std::span<const double> point, Leniency* leniency = nullptr);

private:
    std::vector<Quantity> stack_;
};

}  // namespace norv
