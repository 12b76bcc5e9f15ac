#pragma once

#include <cstdint>
#include <limits>

#include "model/chunked_array.hpp"
#include "model/closed_model.hpp"

namespace engine {

/// Largest counts that the 32-bit indices of the interface reach.
struct StoreLimits {
    std::int64_t expressions = std::numeric_limits<std::int32_t>::max();
    std::int64_t operands = std::numeric_limits<std::int32_t>::max();
};

/// The expression graph while it is built: every call is O(1), and operands may be appended to any
/// operator expression at any time.
///
/// An expression holds head, tail and number of a chain of operands in a shared pool, a constant
/// its value in the same place: 16 bytes an expression, 8 an operand. What is refused (as a
/// Refusal) changes nothing, also when memory runs out.
class ExpressionStore {
public:
    explicit ExpressionStore(StoreLimits limits = {}) : limits_(limits) {}

    [[nodiscard]] const StoreLimits& limits() const { return limits_; }
    [[nodiscard]] std::int32_t nbExpressions() const {
        return static_cast<std::int32_t>(nodes_.size());
    }
    [[nodiscard]] std::int32_t nbOperands() const {
        return static_cast<std::int32_t>(pool_.size());
    }

    /// @param op  any operator but LS_OP_CONST.
    ExpressionIndex createExpression(ls_operator op);
    ExpressionIndex createConstant(Value value);
    /// Refuses an operand that the operator does not take at this position, and one too many.
    void addOperand(ExpressionIndex e, ExpressionIndex operand);

    [[nodiscard]] ls_operator operatorOf(ExpressionIndex e) const {
        return static_cast<ls_operator>(node(e).op);
    }
    [[nodiscard]] std::int32_t nbOperandsOf(ExpressionIndex e) const {
        return node(e).op == LS_OP_CONST ? 0 : node(e).nbOperands;
    }
    /// O(1) for the first position and for the one after the last asked; else O(position).
    [[nodiscard]] ExpressionIndex operandOf(ExpressionIndex e, std::int32_t position) const;
    /// Only of constants.
    [[nodiscard]] Value constantOf(ExpressionIndex e) const;

    /// Calls `visit(operand)` for the operands of `e` in the order of addition.
    template <class Visit>
    void forEachOperand(ExpressionIndex e, Visit visit) const {
        std::int32_t k = node(e).head;
        for (std::int32_t n = nbOperandsOf(e); n > 0; --n) {
            const Link& link = pool_[static_cast<std::size_t>(k)];
            visit(link.operand);
            k = link.next;
        }
    }

private:
    struct Node {
        std::int32_t head;        ///< first and last operand in the pool;
        std::int32_t tail;        ///< of a constant: the two halves of its value
        std::int32_t nbOperands;  ///< of a constant: 1 for an integer, 0 for a double
        std::int32_t op;
    };
    struct Link {
        ExpressionIndex operand;
        std::int32_t next;
    };
    /// Where operandOf stopped, so that reading operands in order is O(1) each.
    struct Cursor {
        ExpressionIndex expression = -1;
        std::int32_t position = 0;
        std::int32_t link = 0;
    };

    [[nodiscard]] const Node& node(ExpressionIndex e) const {
        return nodes_[static_cast<std::size_t>(e)];
    }
    ExpressionIndex append(const Node& node);
    void checkOperand(ExpressionIndex e, ExpressionIndex operand) const;

    StoreLimits limits_;
    ChunkedArray<Node> nodes_;
    ChunkedArray<Link> pool_;
    mutable Cursor cursor_;
};

}  // namespace engine
