#include "nonlinear/expression.hpp"

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>

namespace norv {

ExpressionStore::ExpressionStore(std::int32_t nbVariables)
    : variables_(nbVariables), nodes_(static_cast<std::size_t>(nbVariables)) {}

void ExpressionStore::reserve(std::size_t moreNodes, std::size_t moreOperands) {
    nodes_.reserve(nodes_.size() + moreNodes);
    operandLists_.reserve(operandLists_.size() + moreOperands);
}

NodeIndex ExpressionStore::append(const Node& node) {
    if (nodes_.size() >= static_cast<std::size_t>(std::numeric_limits<NodeIndex>::max()))
        throw std::length_error("the model has more than 2147483647 expressions");
    nodes_.push_back(node);
    return static_cast<NodeIndex>(nodes_.size() - 1);
}

NodeIndex ExpressionStore::constant(double value) {
    Node node;
    node.kind = NodeKind::constant;
    node.value = value + 0.0;  // -0.0 + 0.0 is 0.0
    return append(node);
}

NodeIndex ExpressionStore::addOperation(NodeKind kind, Function function,
                                        std::span<const NodeIndex> operands) {
    Node node;
    node.kind = kind;
    node.function = static_cast<std::uint8_t>(function);
    node.nbOperands = static_cast<std::uint32_t>(operands.size());
    node.start = static_cast<std::int64_t>(operandLists_.size());
    for (const NodeIndex each : operands) node.holdsForeign |= holdsForeign(each);
    operandLists_.insert(operandLists_.end(), operands.begin(), operands.end());
    return append(node);
}

bool ExpressionStore::areConstant(std::span<const NodeIndex> operands) const {
    return std::all_of(operands.begin(), operands.end(),
                       [this](NodeIndex each) { return isConstant(each); });
}

NodeIndex ExpressionStore::sum(std::span<const NodeIndex> terms) {
    if (terms.size() == 1) return terms[0];
    if (!areConstant(terms)) return addOperation(NodeKind::sum, terms);
    double total = 0.0;
    for (const NodeIndex each : terms) total += valueOf(each);
    return std::isfinite(total) ? constant(total) : addOperation(NodeKind::sum, terms);
}

NodeIndex ExpressionStore::difference(NodeIndex a, NodeIndex b) {
    const std::array operands = {a, b};
    if (areConstant(operands) && std::isfinite(valueOf(a) - valueOf(b)))
        return constant(valueOf(a) - valueOf(b));
    return addOperation(NodeKind::difference, operands);
}

NodeIndex ExpressionStore::product(std::span<const NodeIndex> factors) {
    if (factors.size() == 1) return factors[0];
    if (!areConstant(factors)) return addOperation(NodeKind::product, factors);
    double total = 1.0;
    for (const NodeIndex each : factors) total *= valueOf(each);
    return std::isfinite(total) ? constant(total) : addOperation(NodeKind::product, factors);
}

NodeIndex ExpressionStore::quotient(NodeIndex a, NodeIndex b) {
    const std::array operands = {a, b};
    if (areConstant(operands) && std::isfinite(valueOf(a) / valueOf(b)))
        return constant(valueOf(a) / valueOf(b));
    return addOperation(NodeKind::quotient, operands);
}

NodeIndex ExpressionStore::negation(NodeIndex a) {
    if (isConstant(a)) return constant(-valueOf(a));
    return addOperation(NodeKind::negation, std::span(&a, 1));
}

NodeIndex ExpressionStore::call(Function function, std::span<const NodeIndex> arguments) {
    if (isFoldable(function) && arguments.size() == 1)
        return isLogical(function) ? truth(arguments[0]) : arguments[0];
    constexpr std::size_t longest = 3;
    const bool isShort =
        arguments.size() <= longest && !(isFoldable(function) && arguments.size() != 2);
    if (isShort && areConstant(arguments)) {
        std::array<Quantity, longest> values;
        std::transform(arguments.begin(), arguments.end(), values.begin(), [this](NodeIndex each) {
            return Quantity{valueOf(each), 0};
        });
        const Quantity result = norv::call(function, std::span(values).first(arguments.size()));
        if (result.nbErrors == 0) return constant(result.value);
    }
    return addOperation(NodeKind::call, function, arguments);
}

NodeIndex ExpressionStore::call(Function function, NodeIndex x, NodeIndex y) {
    const std::array arguments = {x, y};
    return call(function, arguments);
}

NodeIndex ExpressionStore::truth(NodeIndex a) {
    if (kind(a) == NodeKind::call && isLogical(functionOf(a))) return a;
    if (isConstant(a)) return constant(valueOf(a) != 0.0 ? 1.0 : 0.0);
    return call(Function::relopne, a, constant(0.0));
}

NodeIndex ExpressionStore::foreign(std::int32_t label) {
    Node node;
    node.kind = NodeKind::foreign;
    node.holdsForeign = true;
    node.start = label;
    return append(node);
}

std::int32_t ExpressionStore::labelOf(NodeIndex node) const {
    return static_cast<std::int32_t>(at(node).start);
}

std::span<const NodeIndex> ExpressionStore::operandsOf(NodeIndex node) const {
    const Node& each = at(node);
    if (each.nbOperands == 0) return {};
    return std::span(operandLists_).subspan(static_cast<std::size_t>(each.start), each.nbOperands);
}

}  // namespace norv
