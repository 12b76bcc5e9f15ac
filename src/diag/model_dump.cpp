#include "diag/model_dump.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "diag/number_text.hpp"
#include "diag/operator_names.hpp"

namespace vex {

namespace {

using localsolver::LSException;
using localsolver::LSExpression;

constexpr int significantDigits = 6;

/// An expression whose operands are being written.
struct OpenExpression {
    LSExpression expression;
    std::int32_t nextOperand;
    std::int32_t nbOperands;
};

/// The value of a constant, nothing when the optimizer refuses to tell it.
std::optional<std::string> constantText(LSExpression constant) {
    try {
        if (!constant.isDouble()) return std::to_string(constant.getIntValue());
    } catch (const LSException&) {  // then it may still have a double value
    }
    try {
        return generalText(constant.getDoubleValue(), significantDigits);
    } catch (const LSException&) {
        return std::nullopt;
    }
}

/// The whole text of an expression that is written without operands, nothing for the others.
std::optional<std::string> leafText(LSExpression expression, int op) {
    if (op == LS_OP_CONST) return constantText(expression);
    if (op == LS_OP_BOOL || op == LS_OP_FLOAT || op == LS_OP_INT)
        return expression.isNamed() ? expression.getName() : "x";
    return std::nullopt;
}

void writeLine(std::ostream& stream, LSExpression expression, std::string_view prefix,
               std::int32_t position) {
    stream << (expression.isNamed() ? expression.getName()
                                    : std::string(prefix) + std::to_string(position))
           << ": ";
    writeExpression(stream, expression) << '\n' << std::flush;
}

}  // namespace

std::ostream& writeOperatorName(std::ostream& stream, int op) {
    if (op >= 0 && static_cast<std::size_t>(op) < operatorNames.size())
        return stream << operatorNames[static_cast<std::size_t>(op)];
    return stream << "lsop" << std::to_string(op);
}

std::ostream& writeExpression(std::ostream& stream, LSExpression expression) {
    std::vector<OpenExpression> open;
    const auto begin = [&](LSExpression e) {
        const int op = e.getOperator();
        if (const auto leaf = leafText(e, op)) {
            stream << *leaf;
        } else {
            writeOperatorName(stream, op) << '(';
            open.push_back({e, 0, e.getNbOperands()});
        }
    };
    begin(expression);
    while (!open.empty() && stream) {
        OpenExpression& innermost = open.back();
        if (innermost.nextOperand == innermost.nbOperands) {
            stream << ')';
            open.pop_back();
            continue;
        }
        if (innermost.nextOperand > 0) stream << ", ";
        begin(innermost.expression.getOperand(innermost.nextOperand++));
    }
    return stream;
}

std::ostream& dumpModel(std::ostream& stream, const localsolver::LSModel& model) {
    const std::int32_t nbObjectives = model.getNbObjectives();
    for (std::int32_t i = 0; i < nbObjectives && stream; ++i)
        writeLine(stream, model.getObjective(i), "obj", i);
    const std::int32_t nbConstraints = model.getNbConstraints();
    for (std::int32_t i = 0; i < nbConstraints && stream; ++i)
        writeLine(stream, model.getConstraint(i), "con", i);
    return stream;
}

}  // namespace vex
