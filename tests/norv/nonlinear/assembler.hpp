#pragma once

#include <algorithm>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "nonlinear/functions.hpp"
#include "nonlinear/instruction_code.hpp"
#include "nonlinear/instruction_list.hpp"

namespace norv {

/// An instruction list written as text, "nlPushV 1, nlMulI #2.5, nlCallArg1 sqr": fields are
/// numbers, functions by name, or constants after #, which go to the pool.
struct Assembled {
    InstructionList list;
    std::vector<double> pool;
};

/// Those that models may call, in the order of their codes.
inline const std::vector<FunctionTraits>& usedFunctions() {
    static const std::vector<FunctionTraits> functions = [] {
        std::vector<FunctionTraits> used;
        std::ranges::copy_if(functionTable, std::back_inserter(used), &FunctionTraits::isUsed);
        return used;
    }();
    return functions;
}

inline std::int32_t opcodeOf(const std::string& name) {
    for (const OpcodeTraits& each : opcodeTable) {
        if (each.name == name) return each.code;
    }
    return std::stoi(name);
}

inline std::int32_t fieldOf(const std::string& text, std::vector<double>& pool) {
    if (text.empty()) return 0;
    if (text[0] == '#') {
        pool.push_back(std::stod(text.substr(1)));
        return static_cast<std::int32_t>(pool.size());
    }
    for (const FunctionTraits& each : functionTable) {
        if (each.name == text) return static_cast<std::int32_t>(each.code);
    }
    return std::stoi(text);
}

inline Assembled assemble(const std::string& code) {
    Assembled result;
    std::istringstream instructions(code);
    for (std::string one; std::getline(instructions, one, ',');) {
        std::istringstream words(one);
        std::string opcode;
        std::string field;
        words >> opcode >> field;
        const std::int32_t number = opcodeOf(opcode);
        result.list.add(number, fieldOf(field, result.pool));
    }
    return result;
}

/// The list as `assemble` reads it, without the frame of nlHeader and nlStore.
inline std::string describe(const InstructionList& list, const std::vector<double>& pool) {
    std::ostringstream text;
    for (std::size_t k = 0; k < list.size(); ++k) {
        const OpcodeTraits& traits = traitsOf(list.opcodes[k]);
        if (traits.code == nlHeader || traits.code == nlStore) continue;
        text << (text.tellp() == 0 ? "" : ", ") << traits.name;
        const auto field = list.fields[k];
        if (traits.operand == Operand::constant) {
            text << " #" << pool[static_cast<std::size_t>(field - 1)];
        } else if (traits.action == Action::callOne || traits.action == Action::callTwo ||
                   traits.action == Action::callMany) {
            text << ' ' << findFunction(field)->name;
        } else if (traits.operand == Operand::variable || traits.action == Action::announce) {
            text << ' ' << field;
        }
    }
    return text.str();
}

}  // namespace norv
