#include "translate/instruction_converter.hpp"

#include "host/operations.hpp"
#include "translate/saturate.hpp"
#include "translate/translation_error.hpp"

/// Opcodes: the stack discipline and arithmetic. Functions stand in function_calls.cpp.

namespace vex {

using localsolver::LSExpression;

namespace {

constexpr const char* thisMethod = "NorvLocalSolver::convertExpression";

}  // namespace

InstructionConverter::InstructionConverter(NorvLocalSolver& translator,
                                           std::vector<LSExpression>& stack, const double* pool)
    : translator_(translator),
      model_(translator.solver->getModel()),
      pool_(pool),
      stack_(stack),
      bottom_(stack.size()) {}

InstructionConverter::~InstructionConverter() {
    stack_.resize(bottom_);
}

LSExpression InstructionConverter::convert(std::int32_t nbInstructions, const std::int32_t* opcodes,
                                           const std::int32_t* fields) {
    for (position_ = 0; position_ < nbInstructions; ++position_)
        execute(opcodes[position_], fields[position_]);
    if (stack_.size() == bottom_) throw malformed("the list leaves no value");
    return stack_[bottom_];
}

void InstructionConverter::execute(std::int32_t opcode, std::int32_t field) {
    using enum hostapi::Opcode;
    switch (static_cast<Opcode>(opcode)) {  // every opcode: the compiler misses one left out
        case nlNoOp:
        case nlStore:
        case nlHeader:
            return;
        case nlPushV:
            return push(variableOf(field));
        case nlPushI:
            return push(translator_.makeConstant(constantOf(field)));
        case nlPushZero:
            return push(translator_.makeIntConstant(0));
        case nlAdd: {
            const LSExpression b = pop();
            return pushSum(1.0, b, pop(), /*yExtendable=*/true);
        }
        case nlAddV: {
            const LSExpression v = variableOf(field);
            return pushSum(1.0, pop(), v, /*yExtendable=*/false);
        }
        case nlAddI:
            return addConstant(constantOf(field));
        case nlMulIAdd: {
            const double c = constantOf(field);
            const LSExpression b = pop();
            return pushSum(c, b, pop(), /*yExtendable=*/true);
        }
        case nlSub:
            return pushBinary<LS_OP_SUB>();
        case nlSubV:
            return combineWithVariable(LS_OP_SUB, field);
        case nlSubI:
            return subtractConstant(constantOf(field));
        case nlMul: {
            const LSExpression b = pop();
            return pushProduct(b, pop(), /*yExtendable=*/true);
        }
        case nlMulV: {
            const LSExpression v = variableOf(field);
            return pushProduct(pop(), v, /*yExtendable=*/false);
        }
        case nlMulI:
            return scaleTop(constantOf(field));
        case nlDiv:
            return pushBinary<LS_OP_DIV>();
        case nlDivV:
            return combineWithVariable(LS_OP_DIV, field);
        case nlDivI:
            return scaleTop(1.0 / constantOf(field));
        case nlUMin:
            return scaleTop(-1.0);
        case nlUMinV: {
            const LSExpression v = variableOf(field);
            return push(make(LS_OP_PROD, v, integerConstant(-1)));
        }
        case nlFuncArgN:
            pendingCount_ = field;
            return;
        case nlCallArg1:
            pendingCount_ = 1;
            return call(field);
        case nlCallArg2:
            pendingCount_ = 2;
            return call(field);
        case nlCallArgN:
            return call(field);
        case nlEnd:
        case nlChk:
        case nlAddO:
        case nlPushO:
        case nlInvoc:
        case nlStackIn:
            break;
    }
    throw translationError(
        __LINE__, thisMethod,
        "Unsupported NORV opcode " +
            (isOpcode(opcode) ? std::string(traitsOf(opcode).name) : std::to_string(opcode)));
}

void InstructionConverter::pushSum(double factor, LSExpression x, LSExpression y,
                                   bool yExtendable) {
    push(translator_.makeLinearCombination(factor, x, /*xExtendable=*/true, 1.0, y, yExtendable,
                                           0.0));
}

void InstructionConverter::pushProduct(LSExpression x, LSExpression y, bool yExtendable) {
    push(translator_.makeFlatExpression(LS_OP_PROD, x, /*xExtendable=*/true, y, yExtendable));
}

void InstructionConverter::combineWithVariable(ls_operator op, std::int32_t field) {
    const LSExpression v = variableOf(field);
    push(make(op, pop(), v));
}

void InstructionConverter::addConstant(double c) {
    push(translator_.makeLinearCombination(1.0, pop(), /*xExtendable=*/true, 0.0, LSExpression(),
                                           /*yExtendable=*/true, c));
}

void InstructionConverter::subtractConstant(double c) {
    const LSExpression b = pop();
    // Both: the most negative integer has no negation, and is the negation of none.
    push(make(LS_OP_SUM, b,
              isIntegral(c) && isIntegral(-c) ? integerConstant(static_cast<std::int64_t>(-c))
                                              : doubleConstant(-c)));
}

void InstructionConverter::scaleTop(double factor) {
    push(translator_.scaleExpression(pop(), /*extendable=*/true, factor));
}

LSExpression InstructionConverter::variableOf(std::int32_t field) {
    if (field < 1)
        throw malformed("variable number " + std::to_string(field) + ", expected 1 or more");
    return translator_.getVariable(nmoGetjSolver(translator_.nmo, field - 1));
}

double InstructionConverter::constantOf(std::int32_t field) const {
    if (field < 1) throw malformed("pool entry " + std::to_string(field) + ", expected 1 or more");
    return pool_[field - 1];
}

LSExpression InstructionConverter::pop() {
    if (stack_.size() == bottom_) throw malformed("an operand is missing, the stack is empty");
    const LSExpression top = stack_.back();
    stack_.pop_back();
    return top;
}

void InstructionConverter::push(LSExpression e) {
    if (isBuilt(e)) stack_.push_back(e);
}

LSExpression InstructionConverter::integerConstant(std::int64_t value) const {
    return model_.createConstant(value);
}

LSExpression InstructionConverter::doubleConstant(double value) const {
    return model_.createConstant(value);
}

LSExpression InstructionConverter::make(ls_operator op, LSExpression x) const {
    const LSExpression e = model_.createExpression(op);
    e.addOperand(x);
    return e;
}

LSExpression InstructionConverter::make(ls_operator op, LSExpression x, LSExpression y) const {
    const LSExpression e = make(op, x);
    e.addOperand(y);
    return e;
}

localsolver::LSException InstructionConverter::malformed(const std::string& what) const {
    return translationError(__LINE__, thisMethod,
                            "Malformed NORV instruction list at instruction " +
                                std::to_string(position_) + ": " + what + ".");
}

LSExpression NorvLocalSolver::convertExpression(std::int32_t nbInstructions,
                                                const std::int32_t* opcodes,
                                                const std::int32_t* fields, const double* pool) {
    constexpr std::size_t usualDepth = 20;
    conversionStack_.reserve(usualDepth);
    return InstructionConverter(*this, conversionStack_, pool)
        .convert(nbInstructions, opcodes, fields);
}

}  // namespace vex
