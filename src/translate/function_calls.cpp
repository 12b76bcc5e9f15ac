#include "translate/instruction_converter.hpp"
#include "translate/translation_error.hpp"

/// Function calls of the instruction code.

namespace vex {

void InstructionConverter::call(std::int32_t function) {
    const auto code = static_cast<std::size_t>(function);
    const bool known = function >= 0 && code < functionRows.size();
    if (!known || functionRows[code].shape == FunctionShape::refused) {
        throw translationError(
            __LINE__, "NorvLocalSolver::convertExpression",
            "Unsupported NORV function " +
                (known ? std::string(functionNames[code]) : std::to_string(function)));
    }
    applyShape(functionRows[code]);
}

void InstructionConverter::applyShape(const FunctionRow& row) {
    switch (row.shape) {
        case FunctionShape::pi:
            return push(translator.makeConstant(3.141592653589793));
        case FunctionShape::power:
            return pushPower();
        case FunctionShape::signPower:
            return pushSignPower();
        case FunctionShape::distance:
            return pushDistance();
        case FunctionShape::polynomial:
            return pushPolynomial();
        default:
            break;
    }
    const LSExpression top = pop();
    switch (row.shape) {
        case FunctionShape::unary:
            return push(make(row.op, top));
        case FunctionShape::square:
            return push(translator.makeFlatExpression(LS_OP_PROD, top, /*xExtendable=*/true, top,
                                                      /*yExtendable=*/true));
        case FunctionShape::logarithm: {
            const LSExpression logarithm = make(LS_OP_LOG, top);
            return push(make(LS_OP_PROD, logarithm, doubleConstant(row.factor)));
        }
        default:
            break;
    }
    const LSExpression below = pop();
    switch (row.shape) {
        case FunctionShape::binary:
            return push(make(row.op, below, top));
        case FunctionShape::flatTop:
            return push(translator.makeFlatExpression(row.op, top, /*xExtendable=*/true, below,
                                                      /*yExtendable=*/true));
        case FunctionShape::flatBottom:
            return push(translator.makeFlatExpression(row.op, below, /*xExtendable=*/true, top,
                                                      /*yExtendable=*/true));
        case FunctionShape::implication:
            return push(translator.makeFlatExpression(LS_OP_OR, make(LS_OP_NOT, below),
                                                      /*xExtendable=*/true, top,
                                                      /*yExtendable=*/true));
        default: {  // choice: condition, then, else from the deepest up
            const LSExpression choice = make(LS_OP_IF, pop(), below);
            choice.addOperand(top);
            return push(choice);
        }
    }
}

void InstructionConverter::pushPower() {
    const LSExpression exponent = pop();
    const LSExpression base = pop();
    const bool exponentIsOne =
        exponent.getOperator() == LS_OP_CONST && translator.getConstantValue(exponent) == 1.0;
    push(exponentIsOne ? base : make(LS_OP_POW, base, exponent));
}

void InstructionConverter::pushSignPower() {
    const LSExpression exponent = pop();
    const LSExpression base = pop();
    const LSExpression magnitude = make(LS_OP_ABS, base);
    const LSExpression lowered = make(LS_OP_SUB, exponent, integerConstant(1));
    push(make(LS_OP_PROD, base, make(LS_OP_POW, magnitude, lowered)));
}

void InstructionConverter::pushDistance() {
    const auto squareOfTop = [this] {
        const LSExpression top = pop();
        return make(LS_OP_POW, top, doubleConstant(2.0));
    };
    LSExpression squares = squareOfTop();
    for (; pendingCount > 1; --pendingCount) {
        const LSExpression square = squareOfTop();
        squares = translator.makeLinearCombination(1.0, squares, /*xExtendable=*/true, 1.0, square,
                                                   /*yExtendable=*/true, 0.0);
    }
    push(make(LS_OP_SQRT, squares));
    pendingCount = -1;
}

/// Arguments x, a0, a1, …, ak stand for a0 + a1·x + … + ak·x^k.
void InstructionConverter::pushPolynomial() {
    if (pendingCount < 0) throw malformed("poly without an announced argument count");
    const auto nbArguments = static_cast<std::size_t>(pendingCount);
    pendingCount = -1;
    if (nbArguments > stack.size() - bottom)
        throw malformed("an operand is missing, poly announced " + std::to_string(nbArguments));
    const std::size_t first = stack.size() - nbArguments;
    if (nbArguments < 2) {
        stack.resize(first);
        return push(translator.makeIntConstant(0));
    }
    const LSExpression base = stack[first];
    const LSExpression sum = model.createExpression(LS_OP_SUM);
    for (std::size_t power = nbArguments - 2; power > 0; --power) {
        const LSExpression coefficient = pop();
        sum.addOperand(make(
            LS_OP_PROD, coefficient,
            power == 1 ? base
                       : make(LS_OP_POW, base, integerConstant(static_cast<std::int64_t>(power)))));
    }
    sum.addOperand(pop());
    pop();  // the base
    push(sum);
}

}  // namespace vex
