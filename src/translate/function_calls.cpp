#include <array>

#include "translate/instruction_converter.hpp"
#include "translate/translation_error.hpp"

/// Function calls of the instruction code.

namespace vex {

/// What becomes of each function of the host's instruction code.
struct InstructionConverter::FunctionRules {
    using Rule = void (InstructionConverter::*)();

    struct Row {
        Function function;
        Rule rule;
    };

    /// The accepted functions; all others are refused.
    static constexpr auto accepted = std::to_array<Row>({
        {Function::ceil, &InstructionConverter::pushUnary<LS_OP_CEIL>},
        {Function::floor, &InstructionConverter::pushUnary<LS_OP_FLOOR>},
        {Function::round, &InstructionConverter::pushUnary<LS_OP_ROUND>},
        {Function::min, &InstructionConverter::pushFlatLastFirst<LS_OP_MIN>},
        {Function::max, &InstructionConverter::pushFlatLastFirst<LS_OP_MAX>},
        {Function::sqr, &InstructionConverter::pushSquare},
        {Function::exp, &InstructionConverter::pushUnary<LS_OP_EXP>},
        {Function::log, &InstructionConverter::pushUnary<LS_OP_LOG>},
        {Function::log10, &InstructionConverter::pushDecimalLogarithm},
        {Function::sqrt, &InstructionConverter::pushUnary<LS_OP_SQRT>},
        {Function::abs, &InstructionConverter::pushUnary<LS_OP_ABS>},
        {Function::cos, &InstructionConverter::pushUnary<LS_OP_COS>},
        {Function::sin, &InstructionConverter::pushUnary<LS_OP_SIN>},
        {Function::power, &InstructionConverter::pushPower},
        {Function::pi, &InstructionConverter::pushPi},
        {Function::log2, &InstructionConverter::pushBinaryLogarithm},
        {Function::boolnot, &InstructionConverter::pushUnary<LS_OP_NOT>},
        {Function::booland, &InstructionConverter::pushFlat<LS_OP_AND>},
        {Function::boolor, &InstructionConverter::pushFlat<LS_OP_OR>},
        {Function::boolxor, &InstructionConverter::pushFlat<LS_OP_XOR>},
        {Function::boolimp, &InstructionConverter::pushImplication},
        {Function::booleqv, &InstructionConverter::pushBinary<LS_OP_EQ>},
        {Function::relopeq, &InstructionConverter::pushBinary<LS_OP_EQ>},
        {Function::relopgt, &InstructionConverter::pushBinary<LS_OP_GT>},
        {Function::relopge, &InstructionConverter::pushBinary<LS_OP_GEQ>},
        {Function::reloplt, &InstructionConverter::pushBinary<LS_OP_LT>},
        {Function::relople, &InstructionConverter::pushBinary<LS_OP_LEQ>},
        {Function::relopne, &InstructionConverter::pushBinary<LS_OP_NEQ>},
        {Function::ifthen, &InstructionConverter::pushChoice},
        {Function::rpower, &InstructionConverter::pushPower},
        {Function::edist, &InstructionConverter::pushDistance},
        {Function::div, &InstructionConverter::pushBinary<LS_OP_DIV>},
        {Function::cvpower, &InstructionConverter::pushPower},
        {Function::vcpower, &InstructionConverter::pushPower},
        {Function::signpower, &InstructionConverter::pushSignPower},
        {Function::tan, &InstructionConverter::pushUnary<LS_OP_TAN>},
        {Function::poly, &InstructionConverter::pushPolynomial},
    });

    /// By code; null: refused.
    static constexpr auto byCode = [] {
        std::array<Rule, functionTable.size()> rules{};
        for (const Row& row : accepted) rules[static_cast<std::size_t>(row.function)] = row.rule;
        return rules;
    }();

    /// Has every function that the host uses one row, and no other a row? Counts rows: sanitizers
    /// make no constant of a comparison with a member function.
    static constexpr bool areComplete() {
        std::array<int, functionTable.size()> nbRows{};
        for (const Row& row : accepted) ++nbRows[static_cast<std::size_t>(row.function)];
        for (const FunctionTraits& each : functionTable) {
            if (nbRows[static_cast<std::size_t>(each.code)] != (each.isUsed() ? 1 : 0))
                return false;
        }
        return true;
    }
};

void InstructionConverter::call(std::int32_t function) {
    static_assert(FunctionRules::areComplete());
    const auto code = static_cast<std::size_t>(function);
    const FunctionRules::Rule rule = isFunction(function) ? FunctionRules::byCode[code] : nullptr;
    if (rule == nullptr) {
        throw translationError(__LINE__, "NorvLocalSolver::convertExpression",
                               "Unsupported NORV function " +
                                   (isFunction(function) ? std::string(functionTable[code].name)
                                                         : std::to_string(function)));
    }
    (this->*rule)();
}

template <ls_operator op>
void InstructionConverter::pushUnary() {
    push(make(op, pop()));
}

template <ls_operator op>
void InstructionConverter::pushFlat() {
    const LSExpression y = pop();
    const LSExpression x = pop();
    push(translator_.makeFlatExpression(op, x, /*xExtendable=*/true, y, /*yExtendable=*/true));
}

template <ls_operator op>
void InstructionConverter::pushFlatLastFirst() {
    const LSExpression y = pop();
    const LSExpression x = pop();
    push(translator_.makeFlatExpression(op, y, /*xExtendable=*/true, x, /*yExtendable=*/true));
}

void InstructionConverter::pushPi() {
    push(translator_.makeConstant(3.141592653589793));
}

void InstructionConverter::pushSquare() {
    const LSExpression x = pop();
    push(translator_.makeFlatExpression(LS_OP_PROD, x, /*xExtendable=*/true, x,
                                        /*yExtendable=*/true));
}

void InstructionConverter::pushDecimalLogarithm() {
    pushScaledLogarithm(0.43429448190325176);
}

void InstructionConverter::pushBinaryLogarithm() {
    pushScaledLogarithm(1.4426950408889634);
}

void InstructionConverter::pushScaledLogarithm(double factor) {
    const LSExpression logarithm = make(LS_OP_LOG, pop());
    push(make(LS_OP_PROD, logarithm, doubleConstant(factor)));
}

void InstructionConverter::pushImplication() {
    const LSExpression conclusion = pop();
    const LSExpression premiseFails = make(LS_OP_NOT, pop());
    push(translator_.makeFlatExpression(LS_OP_OR, premiseFails, /*xExtendable=*/true, conclusion,
                                        /*yExtendable=*/true));
}

void InstructionConverter::pushChoice() {
    const LSExpression otherwise = pop();
    const LSExpression then = pop();
    const LSExpression choice = make(LS_OP_IF, pop(), then);
    choice.addOperand(otherwise);
    push(choice);
}

void InstructionConverter::pushPower() {
    const LSExpression exponent = pop();
    const LSExpression base = pop();
    const bool exponentIsOne =
        exponent.getOperator() == LS_OP_CONST && translator_.getConstantValue(exponent) == 1.0;
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
    for (; pendingCount_ > 1; --pendingCount_) {
        const LSExpression square = squareOfTop();
        squares = translator_.makeLinearCombination(1.0, squares, /*xExtendable=*/true, 1.0, square,
                                                    /*yExtendable=*/true, 0.0);
    }
    push(make(LS_OP_SQRT, squares));
    pendingCount_ = -1;
}

/// Arguments x, a0, a1, …, ak stand for a0 + a1·x + … + ak·x^k.
void InstructionConverter::pushPolynomial() {
    if (pendingCount_ < 0) throw malformed("poly without an announced argument count");
    const auto nbArguments = static_cast<std::size_t>(pendingCount_);
    pendingCount_ = -1;
    if (nbArguments > stack_.size() - bottom_)
        throw malformed("an operand is missing, poly announced " + std::to_string(nbArguments));
    const std::size_t first = stack_.size() - nbArguments;
    if (nbArguments < 2) {
        stack_.resize(first);
        return push(translator_.makeIntConstant(0));
    }
    const LSExpression base = stack_[first];
    const LSExpression sum = model_.createExpression(LS_OP_SUM);
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
