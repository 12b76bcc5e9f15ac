#include "nonlinear/instruction_list.hpp"

#include <algorithm>

#include "nonlinear/functions.hpp"
#include "nonlinear/instruction_code.hpp"

namespace norv {

namespace {

/// Runs a list on a stack that is a mere number.
class Checker {
public:
    Checker(std::int32_t lastVariable, std::int32_t lastPoolEntry)
        : nbVariables_(lastVariable), nbPoolEntries_(lastPoolEntry) {}

    void check(std::span<const std::int32_t> opcodes, std::span<const std::int32_t> fields) {
        for (std::size_t k = 0; k < opcodes.size() && result.fault.empty(); ++k) {
            if (const std::string reason = step(opcodes[k], fields[k]); !reason.empty()) {
                result.fault = "instruction " + std::to_string(k + 1) + " of " +
                               std::to_string(opcodes.size()) + ": " + reason;
            }
        }
        if (result.fault.empty() && height_ != 1)
            result.fault = "the instructions leave " + std::to_string(height_) + " values, not one";
    }

    ListCheck result;

private:
    std::string step(std::int32_t opcode, std::int32_t field);
    std::string checkField(const OpcodeTraits& traits, std::int32_t field) const;
    std::string checkCall(std::string_view opcodeName, std::int32_t field);
    std::string exchange(std::string_view name, std::int32_t nbPopped, std::int32_t nbPushed);

    std::int32_t nbVariables_;
    std::int32_t nbPoolEntries_;
    std::int32_t height_ = 0;
    std::int32_t announced_ = -1;
};

std::string Checker::exchange(std::string_view name, std::int32_t nbPopped, std::int32_t nbPushed) {
    if (nbPopped > height_) {
        return std::string(name) + " takes " + std::to_string(nbPopped) + " values, there are " +
               std::to_string(height_);
    }
    height_ += nbPushed - nbPopped;
    result.depth = std::max(result.depth, height_);
    return {};
}

std::string Checker::checkField(const OpcodeTraits& traits, std::int32_t field) const {
    const bool isVariable = traits.operand == Operand::variable;
    if (!isVariable && traits.operand != Operand::constant) return {};
    const std::int32_t last = isVariable ? nbVariables_ : nbPoolEntries_;
    if (field >= 1 && field <= last) return {};
    return std::string(traits.name) + " names " + (isVariable ? "variable " : "pool entry ") +
           std::to_string(field) + ", there are " + std::to_string(last) + ", counted from 1";
}

std::string Checker::checkCall(std::string_view opcodeName, std::int32_t field) {
    const FunctionTraits* function = findFunction(field);
    if (function == nullptr)
        return std::string(opcodeName) + " names function " + std::to_string(field) +
               ", which this host does not evaluate";
    const std::string name(function->name);
    if (announced_ < 0) return name + " is called with no count of arguments announced";
    const bool isAny = function->nbArguments == FunctionTraits::anyCount;
    if (!isAny && announced_ != function->nbArguments) {
        return name + " is called with " + std::to_string(announced_) + " arguments, it has " +
               std::to_string(function->nbArguments);
    }
    const std::int32_t count = nbConsumed(*function, announced_);
    if (isAny) announced_ = -1;
    return exchange(name, count, 1);
}

std::string Checker::step(std::int32_t opcode, std::int32_t field) {
    if (!isOpcode(opcode)) return "there is no opcode " + std::to_string(opcode);
    const OpcodeTraits& traits = traitsOf(opcode);
    if (std::string reason = checkField(traits, field); !reason.empty()) return reason;
    const std::int32_t fromStack = traits.operand == Operand::stack ? 1 : 0;
    switch (traits.action) {
        case Action::nothing:
            return {};
        case Action::push:
            return exchange(traits.name, 0, 1);
        case Action::add:
        case Action::subtract:
        case Action::multiply:
        case Action::divide:
            return exchange(traits.name, 1 + fromStack, 1);
        case Action::negate:
            return exchange(traits.name, fromStack, 1);
        case Action::addMultiple:
            return exchange(traits.name, 2, 1);
        case Action::announce:
            announced_ = field;
            return field >= 0 ? std::string() : "nlFuncArgN announces a negative count";
        case Action::callOne:
        case Action::callTwo:
            announced_ = traits.action == Action::callOne ? 1 : 2;
            return checkCall(traits.name, field);
        case Action::callMany:
            return checkCall(traits.name, field);
        case Action::refuse:
            break;
    }
    return std::string(traits.name) + " has no place in a model's code";
}

}  // namespace

ListCheck checkInstructions(std::span<const std::int32_t> opcodes,
                            std::span<const std::int32_t> fields, std::int32_t nbVariables,
                            std::int32_t nbPoolEntries) {
    Checker checker(nbVariables, nbPoolEntries);
    checker.check(opcodes, fields);
    return checker.result;
}

bool takesVariable(std::int32_t opcode) noexcept {
    return traitsOf(opcode).operand == Operand::variable;
}

void appendLinearTerm(InstructionList& list, std::int32_t variable, double coefficient,
                      std::int32_t poolEntry) {
    const bool isStored = !list.opcodes.empty() && list.opcodes.back() == nlStore;
    const std::int32_t storeField = isStored ? list.fields.back() : 0;
    if (isStored) {
        list.opcodes.pop_back();
        list.fields.pop_back();
    }
    if (coefficient == 1.0 || coefficient == -1.0) {
        list.add(coefficient > 0.0 ? nlAddV : nlSubV, variable + 1);
    } else {
        list.add(nlPushV, variable + 1);
        list.add(nlMulIAdd, poolEntry);
        list.depth = std::max(list.depth, 2);
    }
    if (isStored) list.add(nlStore, storeField);
}

}  // namespace norv
