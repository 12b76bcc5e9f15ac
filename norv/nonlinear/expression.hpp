#pragma once

#include <cstdint>
#include <span>

#include "nonlinear/functions.hpp"
#include "nonlinear/large_vector.hpp"

namespace norv {

using NodeIndex = std::int32_t;
constexpr NodeIndex noNode = -1;

enum class NodeKind : std::uint8_t {
    variable,
    constant,
    sum,         ///< of any number from 1
    difference,  ///< of two
    product,     ///< of any number from 1
    quotient,    ///< of two
    negation,
    call,     ///< of a function; foldable ones take any number from 2
    foreign,  ///< something that this host has no word for; it must not reach a model
};

/// Expressions of one model as a graph: a node may be an operand of many. Operands have smaller
/// indices than their users; nodes 0 to nbVariables - 1 are the variables.
///
/// Operations whose operands are all constants become constants, unless the result is an error.
/// Nothing recurses over the depth.
class ExpressionStore {
public:
    explicit ExpressionStore(std::int32_t nbVariables = 0);

    /// Makes room for so many more nodes and operands.
    void reserve(std::size_t moreNodes, std::size_t moreOperands);

    [[nodiscard]] NodeIndex variable(std::int32_t j) const noexcept { return j; }
    NodeIndex constant(double value);
    /// Of no terms: 0. Of one: that one.
    NodeIndex sum(std::span<const NodeIndex> terms);
    NodeIndex difference(NodeIndex a, NodeIndex b);
    /// Of one factor: that one.
    NodeIndex product(std::span<const NodeIndex> factors);
    NodeIndex quotient(NodeIndex a, NodeIndex b);
    NodeIndex negation(NodeIndex a);
    /// @param arguments  as many as the function has; of foldable ones one or more.
    NodeIndex call(Function function, std::span<const NodeIndex> arguments);
    NodeIndex call(Function function, NodeIndex x) { return call(function, std::span(&x, 1)); }
    NodeIndex call(Function function, NodeIndex x, NodeIndex y);
    /// `a` as 0 or 1: itself when it is nothing else, or whether it differs from 0.
    NodeIndex truth(NodeIndex a);
    /// @param label  the maker's own number for what this is.
    NodeIndex foreign(std::int32_t label);

    /// Most operands are variables; their index tells, so that no memory is touched.
    [[nodiscard]] NodeKind kind(NodeIndex node) const {
        return isVariable(node) ? NodeKind::variable : at(node).kind;
    }
    [[nodiscard]] bool isConstant(NodeIndex node) const { return kind(node) == NodeKind::constant; }
    [[nodiscard]] bool isVariable(NodeIndex node) const noexcept { return node < variables_; }
    [[nodiscard]] double valueOf(NodeIndex node) const { return at(node).value; }  ///< of constants
    [[nodiscard]] Function functionOf(NodeIndex node) const {
        return static_cast<Function>(at(node).function);
    }
    [[nodiscard]] std::int32_t labelOf(NodeIndex node) const;
    /// Is there something foreign in it?
    [[nodiscard]] bool holdsForeign(NodeIndex node) const {
        return !isVariable(node) && at(node).holdsForeign;
    }
    [[nodiscard]] std::span<const NodeIndex> operandsOf(NodeIndex node) const;

    [[nodiscard]] std::int32_t nbVariables() const noexcept { return variables_; }
    [[nodiscard]] std::int32_t nbNodes() const noexcept {
        return static_cast<std::int32_t>(nodes_.size());
    }

private:
    struct Node {
        NodeKind kind = NodeKind::variable;
        bool holdsForeign = false;
        std::uint8_t function = 0;  ///< the code of the called one
        std::uint32_t nbOperands = 0;
        union {
            double value;            ///< of a constant
            std::int64_t start = 0;  ///< of the operands; of a foreign node, its label
        };
    };
    static_assert(sizeof(Node) == 16 && functionTable.size() <= 256);

    [[nodiscard]] const Node& at(NodeIndex node) const {
        return nodes_[static_cast<std::size_t>(node)];
    }
    [[nodiscard]] bool areConstant(std::span<const NodeIndex> operands) const;
    NodeIndex append(const Node& node);
    NodeIndex addOperation(NodeKind kind, Function function, std::span<const NodeIndex> operands);
    NodeIndex addOperation(NodeKind kind, std::span<const NodeIndex> operands) {
        return addOperation(kind, Function{}, operands);
    }

    std::int32_t variables_;
    LargeVector<Node> nodes_;
    LargeVector<NodeIndex> operandLists_;
};

}  // namespace norv
