#pragma once

#include <cstdint>
#include <span>

#include "nonlinear/instruction_code.hpp"
#include "nonlinear/quantity.hpp"

/// The functions that instructions call.

namespace norv {

/// The row of a function that models may call; null for other codes.
constexpr const FunctionTraits* findFunction(std::int32_t code) {
    if (!isFunction(code)) return nullptr;
    const FunctionTraits& function = traitsOf(static_cast<Function>(code));
    return function.isUsed() ? &function : nullptr;
}

/// Is its value 0 or 1 whatever the arguments?
constexpr bool isLogical(Function function) {
    return function >= Function::boolnot && function <= Function::relopne;
}

constexpr bool isRelation(Function function) {
    return function >= Function::relopeq && function <= Function::relopne;
}

/// May a call with many arguments be folded into calls with two, from the left?
constexpr bool isFoldable(Function function) {
    return function == Function::min || function == Function::max ||
           function == Function::booland || function == Function::boolor ||
           function == Function::boolxor;
}

/// The value of a call; docs/instruction-code.md tells what each function means.
/// @param arguments  as many as the function consumes, the first one first.
[[nodiscard]] Quantity call(Function function, std::span<const Quantity> arguments);

/// Does the relation hold between equal sides?
constexpr bool holdsWhenEqual(Function relation) {
    return relation == Function::relopeq || relation == Function::relopge ||
           relation == Function::relople;
}

/// "<", "<=", "=", ">=", ">" or "<>".
[[nodiscard]] const char* signOf(Function relation);

}  // namespace norv
