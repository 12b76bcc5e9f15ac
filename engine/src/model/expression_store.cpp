#include "model/expression_store.hpp"

#include <array>
#include <bit>

#include "model/operator_table.hpp"
#include "model/refusal.hpp"

namespace engine {

namespace {
using Halves = std::array<std::int32_t, 2>;
}  // namespace

ExpressionIndex ExpressionStore::append(const Node& node) {
    if (nbExpressions() >= limits_.expressions) {
        throw Refusal(LS_ERROR_LIMIT, formatText("the model has %d expressions, the most it holds",
                                                 nbExpressions()));
    }
    nodes_.append(node);
    return nbExpressions() - 1;
}

ExpressionIndex ExpressionStore::createExpression(ls_operator op) {
    return append({-1, -1, 0, op});
}

ExpressionIndex ExpressionStore::createConstant(Value value) {
    const auto halves = value.isInt() ? std::bit_cast<Halves>(value.asInt())
                                      : std::bit_cast<Halves>(value.asDouble());
    return append({halves[0], halves[1], value.isInt() ? 1 : 0, LS_OP_CONST});
}

Value ExpressionStore::constantOf(ExpressionIndex e) const {
    const Halves halves{node(e).head, node(e).tail};
    return node(e).nbOperands == 1 ? Value::ofInt(std::bit_cast<std::int64_t>(halves))
                                   : Value::ofDouble(std::bit_cast<double>(halves));
}

void ExpressionStore::checkOperand(ExpressionIndex e, ExpressionIndex operand) const {
    const OperatorInfo& info = operatorInfo(node(e).op);
    const std::int32_t position = nbOperandsOf(e);
    const ls_operator given = operatorOf(operand);
    if (position >= info.maxOperands) {
        throw Refusal(LS_ERROR_ARGUMENT,
                      formatText("expression %d (%s) has %d operands and takes no more", e,
                                 info.name.data(), position));
    }
    if (info.operands == OperandKind::Bounds && given != LS_OP_CONST) {
        throw Refusal(
            LS_ERROR_ARGUMENT,
            formatText("expression %d (%s) cannot bound decision %d: bounds are constants", operand,
                       operatorInfo(given).name.data(), e));
    }
    const bool takesArray = info.operands == OperandKind::Arrays ||
                            (info.operands == OperandKind::ArrayIndex && position == 0);
    if (takesArray != (given == LS_OP_ARRAY)) {
        throw Refusal(
            LS_ERROR_ARGUMENT,
            takesArray ? formatText("operand %d of expression %d (%s) must be an array, not %s",
                                    position, e, info.name.data(), operatorInfo(given).name.data())
                       : formatText("operand %d of expression %d (%s) cannot be an array", position,
                                    e, info.name.data()));
    }
}

void ExpressionStore::addOperand(ExpressionIndex e, ExpressionIndex operand) {
    checkOperand(e, operand);
    if (nbOperands() >= limits_.operands) {
        throw Refusal(LS_ERROR_LIMIT,
                      formatText("the model has %d operands, the most it holds", nbOperands()));
    }
    const std::int32_t k = nbOperands();
    pool_.append({operand, -1});
    Node& n = nodes_[static_cast<std::size_t>(e)];
    if (n.nbOperands == 0) {
        n.head = k;
    } else {
        pool_[static_cast<std::size_t>(n.tail)].next = k;
    }
    n.tail = k;
    ++n.nbOperands;
}

ExpressionIndex ExpressionStore::operandOf(ExpressionIndex e, std::int32_t position) const {
    if (cursor_.expression != e || cursor_.position > position) {
        cursor_ = {e, 0, node(e).head};
    }
    for (; cursor_.position < position; ++cursor_.position) {
        cursor_.link = pool_[static_cast<std::size_t>(cursor_.link)].next;
    }
    return pool_[static_cast<std::size_t>(cursor_.link)].operand;
}

}  // namespace engine
