#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "nonlinear/expression.hpp"
#include "nonlinear/instruction_code.hpp"
#include "nonlinear/instruction_list.hpp"

namespace norv {

/// The entries of a model's constant pool, no value twice.
class ConstantPool {
public:
    /// @param append  adds a constant to the model's pool and gives its entry, from 1.
    explicit ConstantPool(std::function<std::int32_t(double)> append);

    /// The entry that holds `value`, from 1. O(1).
    std::int32_t entryOf(double value);

private:
    struct Slot {
        std::uint64_t bits = 0;  ///< of the value
        std::int32_t entry = 0;  ///< 0: the slot is free
    };

    /// The slot of `bits`, or the free one where they belong.
    [[nodiscard]] Slot& slotOf(std::uint64_t bits);
    void grow();

    std::function<std::int32_t(double)> append_;
    LargeVector<Slot>
        slots_;  ///< a power of 2, at least twice as many as are taken; linear probing
    std::size_t nbTaken_ = 0;
};

/// Writes expressions as instruction code, as compactly as the code allows.
///
/// A list begins with nlHeader and ends with nlStore, both with field 0; between them operands go
/// from left to right. Constants and variables on the right are fields of their operation (nlAddV,
/// nlMulI, …), so a leading constant of a sum or product gives way to the next operand. Terms
/// constant * x of a sum become nlMulIAdd. Foldable functions of many arguments become calls with
/// two. A node that is an operand of many is written out for each.
///
/// Sums of sums are written as one, likewise products and foldable functions: a + (b + c) as
/// (a + b) + c. Left-nested ones keep their order of evaluation. Operands of another kind that
/// readers of the code take for sums (x - 3) or products (-x, x / 2, sqr(x)) are all computed
/// before the chain when there are several, and added or multiplied at its end.
class Emitter {
public:
    /// @param store, pool  outlive the emitter; nothing is added to the store meanwhile. O(nodes).
    Emitter(const ExpressionStore& store, ConstantPool& pool);

    /// An upper bound of the instructions that `root` needs, saturated at 2^32 - 1.
    [[nodiscard]] std::uint32_t sizeBound(NodeIndex root) const {
        return sizes_[static_cast<std::size_t>(root)];
    }

    /// @param root  holds nothing foreign.
    /// @return the list, its depth not set. O(sizeBound).
    [[nodiscard]] InstructionList emit(NodeIndex root);

private:
    /// Something left to do: a node to write, or an instruction when there is no node.
    struct Task {
        NodeIndex node;
        std::int32_t opcode;
        std::int32_t field;
    };
    /// An operation's three forms.
    struct Forms {
        Opcode onStack, withVariable, withConstant;
    };

    void writeNode(NodeIndex node);
    /// Those of `node`, and in place of its like theirs, from left to right. Valid until the next
    /// call.
    [[nodiscard]] std::span<const NodeIndex> flatOperandsOf(NodeIndex node);
    /// Of a sum or product.
    [[nodiscard]] static Forms formsOf(NodeKind kind);
    void planChain(std::span<const NodeIndex> operands, NodeKind kind);
    bool planMerged(std::span<const NodeIndex> operands, NodeKind kind);
    void planLink(NodeIndex operand, NodeKind kind);
    void planTerm(NodeIndex term, bool isSubtracted);
    void planFactor(NodeIndex factor, const Forms& forms);
    void planCall(NodeIndex node);
    void plan(NodeIndex node) { tasks_.push_back({node, nlNoOp, 0}); }
    void plan(Opcode opcode, std::int32_t field = 0) { tasks_.push_back({noNode, opcode, field}); }

    const ExpressionStore& store_;
    ConstantPool& pool_;
    std::vector<std::uint32_t> sizes_;  ///< [nodes]
    std::vector<Task> tasks_;           ///< the next one last
    std::vector<NodeIndex> flat_;       ///< flatOperandsOf's result
    std::vector<NodeIndex> open_;       ///< its nodes still to look into, the next one last
    InstructionList list_;
};

}  // namespace norv
