#pragma once

#include <array>
#include <cstdint>
#include <string_view>

/// The host's instruction code for nonlinear functions: postfix, for an evaluation stack.

namespace norv {

enum Opcode : std::int32_t {
    nlNoOp = 0,
    nlPushV,
    nlPushI,
    nlStore,
    nlAdd,
    nlAddV,
    nlAddI,
    nlSub,
    nlSubV,
    nlSubI,
    nlMul,
    nlMulV,
    nlMulI,
    nlDiv,
    nlDivV,
    nlDivI,
    nlUMin,
    nlUMinV,
    nlHeader,
    nlEnd,
    nlCallArg1,
    nlCallArg2,
    nlCallArgN,
    nlFuncArgN,
    nlMulIAdd,
    nlPushZero,
    nlChk,
    nlAddO,
    nlPushO,
    nlInvoc,
    nlStackIn,
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
    callOne,      ///< a function, the count of arguments being 1
    callTwo,      ///< likewise 2
    callMany,     ///< likewise the announced count
    announce,     ///< the count of arguments of later calls
    refuse,       ///< not for models
};

/// Where an instruction's operand comes from.
enum class Operand : std::uint8_t {
    stack,
    variable,  ///< the field counts variables from 1
    constant,  ///< the field counts pool entries from 1
    zero,
};

struct OpcodeTraits {
    Opcode code;
    std::string_view name;
    Action action;
    Operand operand = Operand::stack;
};

constexpr std::array<OpcodeTraits, 31> opcodeTable = {{
    {nlNoOp, "nlNoOp", Action::nothing},
    {nlPushV, "nlPushV", Action::push, Operand::variable},
    {nlPushI, "nlPushI", Action::push, Operand::constant},
    {nlStore, "nlStore", Action::nothing},
    {nlAdd, "nlAdd", Action::add},
    {nlAddV, "nlAddV", Action::add, Operand::variable},
    {nlAddI, "nlAddI", Action::add, Operand::constant},
    {nlSub, "nlSub", Action::subtract},
    {nlSubV, "nlSubV", Action::subtract, Operand::variable},
    {nlSubI, "nlSubI", Action::subtract, Operand::constant},
    {nlMul, "nlMul", Action::multiply},
    {nlMulV, "nlMulV", Action::multiply, Operand::variable},
    {nlMulI, "nlMulI", Action::multiply, Operand::constant},
    {nlDiv, "nlDiv", Action::divide},
    {nlDivV, "nlDivV", Action::divide, Operand::variable},
    {nlDivI, "nlDivI", Action::divide, Operand::constant},
    {nlUMin, "nlUMin", Action::negate},
    {nlUMinV, "nlUMinV", Action::negate, Operand::variable},
    {nlHeader, "nlHeader", Action::nothing},
    {nlEnd, "nlEnd", Action::refuse},
    {nlCallArg1, "nlCallArg1", Action::callOne},
    {nlCallArg2, "nlCallArg2", Action::callTwo},
    {nlCallArgN, "nlCallArgN", Action::callMany},
    {nlFuncArgN, "nlFuncArgN", Action::announce},
    {nlMulIAdd, "nlMulIAdd", Action::addMultiple, Operand::constant},
    {nlPushZero, "nlPushZero", Action::push, Operand::zero},
    {nlChk, "nlChk", Action::refuse},
    {nlAddO, "nlAddO", Action::refuse},
    {nlPushO, "nlPushO", Action::refuse},
    {nlInvoc, "nlInvoc", Action::refuse},
    {nlStackIn, "nlStackIn", Action::refuse},
}};

/// The table's row number is the opcode.
static_assert([] {
    for (std::size_t k = 0; k < opcodeTable.size(); ++k) {
        if (opcodeTable[k].code != static_cast<std::int32_t>(k)) return false;
    }
    return true;
}());

/// @param opcode  within the table.
constexpr const OpcodeTraits& traitsOf(std::int32_t opcode) {
    return opcodeTable[static_cast<std::size_t>(opcode)];
}

constexpr bool isOpcode(std::int32_t number) {
    return number >= 0 && number < static_cast<std::int32_t>(opcodeTable.size());
}

}  // namespace norv
