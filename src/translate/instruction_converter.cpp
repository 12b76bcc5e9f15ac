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

InstructionConverter::InstructionConverter(NorvLocalSolver& translator_,
                                           std::vector<LSExpression>& stack_, const double* pool_)
    : translator(translator_),
      model(translator_.solver->getModel()),
      pool(pool_),
      stack(stack_),
      bottom(stack_.size()) {}

InstructionConverter::~InstructionConverter() {
    stack.resize(bottom);
}

LSExpression InstructionConverter::convert(std::int32_t nbInstructions, const std::int32_t* opcodes,
                                           const std::int32_t* fields) {
    for (position = 0; position < nbInstructions; ++position)
        execute(opcodes[position], fields[position]);
    if (stack.size() == bottom) throw malformed("the list leaves no value");
    return stack[bottom];
}

void InstructionConverter::execute(std::int32_t opcode, std::int32_t field) {
    switch (const auto known = static_cast<Opcode>(opcode)) {
        case Opcode::noOp:
        case Opcode::store:
        case Opcode::header:
            return;
        case Opcode::pushV:
            return push(variableOf(field));
        case Opcode::pushI:
            return push(translator.makeConstant(constantOf(field)));
        case Opcode::pushZero:
            return push(translator.makeIntConstant(0));
        case Opcode::uMinV: {
            const LSExpression variable = variableOf(field);
            return push(make(LS_OP_PROD, variable, integerConstant(-1)));
        }
        case Opcode::uMin:
            return push(translator.scaleExpression(pop(), /*extendable=*/true, -1.0));
        case Opcode::add:
        case Opcode::sub:
        case Opcode::mul:
        case Opcode::div:
            return combine(known);
        case Opcode::addV:
        case Opcode::subV:
        case Opcode::mulV:
        case Opcode::divV:
            return combineWithVariable(known, field);
        case Opcode::addI:
        case Opcode::subI:
        case Opcode::mulI:
        case Opcode::divI:
        case Opcode::mulIAdd:
            return combineWithConstant(known, field);
        case Opcode::funcArgN:
            pendingCount = field;
            return;
        case Opcode::callArg1:
            pendingCount = 1;
            return call(field);
        case Opcode::callArg2:
            pendingCount = 2;
            return call(field);
        case Opcode::callArgN:
            return call(field);
    }
    const auto number = static_cast<std::size_t>(opcode);
    throw translationError(__LINE__, thisMethod,
                           "Unsupported NORV opcode " + (opcode >= 0 && number < opcodeNames.size()
                                                             ? std::string(opcodeNames[number])
                                                             : std::to_string(opcode)));
}

void InstructionConverter::combine(Opcode opcode) {
    const LSExpression b = pop();
    const LSExpression a = pop();
    switch (opcode) {
        case Opcode::add:
            return push(translator.makeLinearCombination(1.0, b, /*xExtendable=*/true, 1.0, a,
                                                         /*yExtendable=*/true, 0.0));
        case Opcode::sub:
            return push(make(LS_OP_SUB, a, b));
        case Opcode::mul:
            return push(translator.makeFlatExpression(LS_OP_PROD, b, /*xExtendable=*/true, a,
                                                      /*yExtendable=*/true));
        default:
            return push(make(LS_OP_DIV, a, b));
    }
}

void InstructionConverter::combineWithVariable(Opcode opcode, std::int32_t field) {
    const LSExpression v = variableOf(field);
    const LSExpression b = pop();
    switch (opcode) {
        case Opcode::addV:
            return push(translator.makeLinearCombination(1.0, b, /*xExtendable=*/true, 1.0, v,
                                                         /*yExtendable=*/false, 0.0));
        case Opcode::subV:
            return push(make(LS_OP_SUB, b, v));
        case Opcode::mulV:
            return push(translator.makeFlatExpression(LS_OP_PROD, b, /*xExtendable=*/true, v,
                                                      /*yExtendable=*/false));
        default:
            return push(make(LS_OP_DIV, b, v));
    }
}

void InstructionConverter::combineWithConstant(Opcode opcode, std::int32_t field) {
    const double c = constantOf(field);
    const LSExpression b = pop();
    switch (opcode) {
        case Opcode::addI:
            return push(translator.makeLinearCombination(1.0, b, /*xExtendable=*/true, 0.0,
                                                         LSExpression(), /*yExtendable=*/true, c));
        case Opcode::subI:
            // Both: the most negative integer has no negation, and is the negation of none.
            return push(make(LS_OP_SUM, b,
                             isIntegral(c) && isIntegral(-c)
                                 ? integerConstant(static_cast<std::int64_t>(-c))
                                 : doubleConstant(-c)));
        case Opcode::mulI:
            return push(translator.scaleExpression(b, /*extendable=*/true, c));
        case Opcode::divI:
            return push(translator.scaleExpression(b, /*extendable=*/true, 1.0 / c));
        default: {  // mulIAdd
            const LSExpression a = pop();
            return push(translator.makeLinearCombination(c, b, /*xExtendable=*/true, 1.0, a,
                                                         /*yExtendable=*/true, 0.0));
        }
    }
}

LSExpression InstructionConverter::variableOf(std::int32_t field) {
    if (field < 1)
        throw malformed("variable number " + std::to_string(field) + ", expected 1 or more");
    return translator.getVariable(nmoGetjSolver(translator.nmo, field - 1));
}

double InstructionConverter::constantOf(std::int32_t field) const {
    if (field < 1) throw malformed("pool entry " + std::to_string(field) + ", expected 1 or more");
    return pool[field - 1];
}

LSExpression InstructionConverter::pop() {
    if (stack.size() == bottom) throw malformed("an operand is missing, the stack is empty");
    const LSExpression top = stack.back();
    stack.pop_back();
    return top;
}

void InstructionConverter::push(LSExpression e) {
    if (isBuilt(e)) stack.push_back(e);
}

LSExpression InstructionConverter::integerConstant(std::int64_t value) const {
    return model.createConstant(value);
}

LSExpression InstructionConverter::doubleConstant(double value) const {
    return model.createConstant(value);
}

LSExpression InstructionConverter::make(ls_operator op, LSExpression x) const {
    const LSExpression e = model.createExpression(op);
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
                                std::to_string(position) + ": " + what + ".");
}

LSExpression NorvLocalSolver::convertExpression(std::int32_t nbInstructions,
                                                const std::int32_t* opcodes,
                                                const std::int32_t* fields, const double* pool) {
    constexpr std::size_t usualDepth = 20;
    conversionStack.reserve(usualDepth);
    return InstructionConverter(*this, conversionStack, pool)
        .convert(nbInstructions, opcodes, fields);
}

}  // namespace vex
