#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// The host's instruction code for nonlinear functions: lists of opcode and field, postfix, for an
/// evaluation stack. Made from opcodes.inc and functions.inc, which name each of them once.
///
/// An instruction takes its operands off the top of the stack and puts its result there; what a
/// list leaves is its value. 2 * sin(x) is nlPushV x, nlCallArg1 sin, nlMulI 2, between nlHeader
/// and nlStore, which do nothing.

namespace hostapi {

/// Their numbers, 0 to 30.
enum Opcode : std::int32_t {
#define HOST_OPCODE(number, name, action, operand) name = number,
#include "hostapi/opcodes.inc"
#undef HOST_OPCODE
};

/// What an instruction does.
enum class Action : std::uint8_t {
    nothing,
    push,         ///< its operand
    add,          ///< binary: the left side is below the right side on the stack, or on top when
    subtract,     ///  the right side is a variable or constant
    multiply,     ///
    divide,       ///
    negate,       ///< its operand, in place when that is the top
    addMultiple,  ///< a, b: a + constant * b
    callOne,      ///< the function that the field names, the count of arguments being 1
    callTwo,      ///< likewise 2
    callMany,     ///< likewise the announced count
    announce,     ///< the field is the count of arguments of later calls
    refuse,       ///< not for models
};

/// Where an instruction's operand comes from.
enum class Operand : std::uint8_t {
    stack,
    variable,  ///< the field counts variables from 1
    constant,  ///< the field counts pool entries from 1
    zero,
};

/// All that there is to know of an opcode.
struct OpcodeTraits {
    Opcode code;
    std::string_view name;
    Action action;
    Operand operand;
};

/// By number.
constexpr auto opcodeTable = std::to_array<OpcodeTraits>({
#define HOST_OPCODE(number, name, action, operand) {name, #name, Action::action, Operand::operand},
#include "hostapi/opcodes.inc"
#undef HOST_OPCODE
});

/// Is it in the table? Lists from outside may hold anything.
constexpr bool isOpcode(std::int32_t number) {
    return number >= 0 && number < static_cast<std::int32_t>(opcodeTable.size());
}

/// @param opcode  one of the table.
constexpr const OpcodeTraits& traitsOf(std::int32_t opcode) {
    return opcodeTable[static_cast<std::size_t>(opcode)];
}

/// Codes of functions, 0 to 112, as fields of calls have them.
enum class Function : std::int32_t {
#define HOST_FUNCTION(code, name, nbArguments) name = code,
#include "hostapi/functions.inc"
#undef HOST_FUNCTION
};

/// All that there is to know of a function.
struct FunctionTraits {
    static constexpr std::int32_t anyCount = -1;  ///< as many as the call announces
    static constexpr std::int32_t unused = -2;    ///< not for models

    Function code;
    std::string_view name;
    std::int32_t nbArguments;  ///< or anyCount or unused

    [[nodiscard]] constexpr bool isUsed() const { return nbArguments != unused; }
};

/// By code.
constexpr auto functionTable = [] {
    constexpr std::int32_t anyCount = FunctionTraits::anyCount;
    constexpr std::int32_t unused = FunctionTraits::unused;
    return std::to_array<FunctionTraits>({
#define HOST_FUNCTION(code, name, nbArguments) {Function::name, #name, nbArguments},
#include "hostapi/functions.inc"
#undef HOST_FUNCTION
    });
}();

/// Is it in the table?
constexpr bool isFunction(std::int32_t code) {
    return code >= 0 && code < static_cast<std::int32_t>(functionTable.size());
}

/// @param function  one of the table.
constexpr const FunctionTraits& traitsOf(Function function) {
    return functionTable[static_cast<std::size_t>(function)];
}

/// How many stack entries a call takes.
/// @param function   one that is used.
/// @param announced  the count of arguments in force: negative when there is none.
constexpr std::int32_t nbConsumed(const FunctionTraits& function, std::int32_t announced) {
    if (function.nbArguments != FunctionTraits::anyCount) return function.nbArguments;
    return function.code == Function::edist ? std::max(announced, 1) : announced;
}

/// A row's place is its number; a line left out or moved would shift all behind it.
template <class Table>
constexpr bool isInOrder(const Table& table) {
    for (std::size_t k = 0; k < table.size(); ++k) {
        if (static_cast<std::size_t>(table[k].code) != k) return false;
    }
    return true;
}
static_assert(opcodeTable.size() == 31 && isInOrder(opcodeTable));
static_assert(functionTable.size() == 113 && isInOrder(functionTable));

}  // namespace hostapi
