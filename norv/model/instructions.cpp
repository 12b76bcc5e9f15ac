#include "model/instructions.hpp"

#include <algorithm>
#include <array>
#include <limits>

namespace norv {

namespace opcode {
constexpr std::int32_t pushVariable = 1;
constexpr std::int32_t add = 4;
constexpr std::int32_t addVariable = 5;
constexpr std::int32_t subtractVariable = 8;
constexpr std::int32_t multiplyByVariable = 11;
constexpr std::int32_t multiplyByConstant = 12;
constexpr std::int32_t divideByVariable = 14;
constexpr std::int32_t pushNegatedVariable = 17;
}  // namespace opcode

bool takesVariable(std::int32_t code) noexcept {
    constexpr std::array codes = {opcode::pushVariable,     opcode::addVariable,
                                  opcode::subtractVariable, opcode::multiplyByVariable,
                                  opcode::divideByVariable, opcode::pushNegatedVariable};
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

void appendLinearTerm(InstructionList& list, std::int32_t variable, double coefficient,
                      std::vector<double>& pool) {
    pool.push_back(coefficient);
    list.add(opcode::pushVariable, variable + 1);
    list.add(opcode::multiplyByConstant, static_cast<std::int32_t>(pool.size()));
    list.add(opcode::add);
}

double evaluateInstructions(const InstructionList& /*list*/, std::span<const double> /*pool*/,
                            std::span<const double> /*point*/, std::int32_t& nbErrors) {
    // This host carries instruction lists without evaluating them: whoever asks is told so.
    ++nbErrors;
    return std::numeric_limits<double>::quiet_NaN();
}

}  // namespace norv
