#include "nonlinear/emitter.hpp"

#include <algorithm>
#include <bit>
#include <cassert>
#include <limits>
#include <utility>

namespace norv {

namespace {

constexpr std::uint32_t largestSize = std::numeric_limits<std::uint32_t>::max();

/// An operation takes at most two instructions for itself and one per operand.
std::vector<std::uint32_t> sizesOf(const ExpressionStore& store) {
    std::vector<std::uint32_t> sizes(static_cast<std::size_t>(store.nbNodes()), 1);
    for (NodeIndex node = store.nbVariables(); node < store.nbNodes(); ++node) {
        std::uint64_t size = 2;
        for (const NodeIndex each : store.operandsOf(node))
            size += std::uint64_t{sizes[static_cast<std::size_t>(each)]} + 1;
        if (!store.isConstant(node))
            sizes[static_cast<std::size_t>(node)] =
                static_cast<std::uint32_t>(std::min<std::uint64_t>(size, largestSize));
    }
    return sizes;
}

/// A constant other than 0. Readers of the code simplify by a constant factor or divisor, and what
/// a 0 multiplies would lose its errors, what it divides gain a value.
bool isScale(const ExpressionStore& store, NodeIndex node) {
    return store.isConstant(node) && store.valueOf(node) != 0.0;
}

/// The product of a constant and something else, as which of its two operands is the constant.
struct ScaledNode {
    NodeIndex node = noNode;
    double factor = 0.0;
};

ScaledNode asScaled(const ExpressionStore& store, NodeIndex node) {
    if (store.kind(node) != NodeKind::product) return {};
    const auto factors = store.operandsOf(node);
    if (factors.size() != 2) return {};
    for (const auto& [constant, other] :
         {std::pair(factors[0], factors[1]), std::pair(factors[1], factors[0])}) {
        if (isScale(store, constant)) return {other, store.valueOf(constant)};
    }
    return {};
}

/// What a factor or divisor 1 leaves as it is.
NodeIndex unscaled(const ExpressionStore& store, NodeIndex node) {
    for (;;) {
        const ScaledNode scaled = asScaled(store, node);
        NodeIndex inner = scaled.factor == 1.0 ? scaled.node : noNode;
        if (store.kind(node) == NodeKind::quotient) {
            const auto operands = store.operandsOf(node);
            if (isScale(store, operands[1]) && store.valueOf(operands[1]) == 1.0)
                inner = operands[0];
        }
        if (inner == noNode) return node;
        node = inner;
    }
}

/// Is `operand` an operation whose operands may take its place among those of `node`?
bool continues(const ExpressionStore& store, NodeIndex operand, NodeIndex node) {
    const NodeKind kind = store.kind(operand);
    if (kind != store.kind(node)) return false;
    if (kind == NodeKind::call)
        return store.functionOf(operand) == store.functionOf(node) &&
               isFoldable(store.functionOf(node));
    return kind == NodeKind::sum || kind == NodeKind::product;
}

/// Do readers of the code see a sum (a product) in this operand of another kind?
bool readsAs(const ExpressionStore& store, NodeIndex operand, NodeKind kind) {
    const bool isProduct = kind == NodeKind::product;
    switch (store.kind(operand)) {
        case NodeKind::negation:
            return isProduct;
        case NodeKind::quotient:
            return isProduct && isScale(store, store.operandsOf(operand)[1]);
        case NodeKind::difference:
            return !isProduct && isScale(store, store.operandsOf(operand)[1]);
        case NodeKind::call:
            break;
        default:
            return false;
    }
    const Function function = store.functionOf(operand);
    if (!isProduct) return function == Function::poly;
    return function == Function::sqr || function == Function::log10 || function == Function::log2 ||
           function == Function::signpower;
}

}  // namespace

ConstantPool::ConstantPool(std::function<std::int32_t(double)> appendToModel)
    : append_(std::move(appendToModel)), slots_(64) {}

std::int32_t ConstantPool::entryOf(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value + 0.0);
    Slot& slot = slotOf(bits);
    if (slot.entry != 0) return slot.entry;
    const std::int32_t entry = append_(value + 0.0);
    slot = {bits, entry};
    if (2 * ++nbTaken_ > slots_.size()) grow();
    return entry;
}

ConstantPool::Slot& ConstantPool::slotOf(std::uint64_t bits) {
    // Round numbers differ in few bits, all of them high; the product mixes, its high half is kept.
    const std::uint64_t mixed = (bits ^ (bits >> 32U)) * 0x9e3779b97f4a7c15U;
    const std::size_t mask = slots_.size() - 1;
    std::size_t k = static_cast<std::size_t>(mixed >> 32U) & mask;
    while (slots_[k].entry != 0 && slots_[k].bits != bits) k = (k + 1) & mask;
    return slots_[k];
}

void ConstantPool::grow() {
    LargeVector<Slot> smaller(2 * slots_.size());
    smaller.swap(slots_);
    for (const Slot& each : smaller) {
        if (each.entry != 0) slotOf(each.bits) = each;
    }
}

Emitter::Emitter(const ExpressionStore& expressions, ConstantPool& constants)
    : store_(expressions), pool_(constants), sizes_(sizesOf(expressions)) {}

InstructionList Emitter::emit(NodeIndex root) {
    list_ = {};
    list_.add(nlHeader);
    plan(root);
    while (!tasks_.empty()) {
        const Task task = tasks_.back();
        tasks_.pop_back();
        if (task.node == noNode) {
            list_.add(task.opcode, task.field);
        } else {
            writeNode(task.node);
        }
    }
    list_.add(nlStore);
    return std::exchange(list_, {});
}

/// Leaves write themselves; operations plan their parts, the last one first.
void Emitter::writeNode(NodeIndex node) {
    const auto operands = store_.operandsOf(node);
    switch (const NodeKind kind = store_.kind(node)) {
        case NodeKind::variable:
            list_.add(nlPushV, node + 1);
            break;
        case NodeKind::constant:
            if (store_.valueOf(node) == 0.0) {
                list_.add(nlPushZero);
            } else {
                list_.add(nlPushI, pool_.entryOf(store_.valueOf(node)));
            }
            break;
        case NodeKind::sum:
        case NodeKind::product:
            planChain(flatOperandsOf(node), kind);
            break;
        case NodeKind::difference:
            planTerm(operands[1], /*isSubtracted=*/true);
            plan(operands[0]);
            break;
        case NodeKind::quotient:
            planFactor(operands[1], {nlDiv, nlDivV, nlDivI});
            plan(operands[0]);
            break;
        case NodeKind::negation:
            if (store_.isVariable(operands[0])) {
                list_.add(nlUMinV, operands[0] + 1);
            } else {
                plan(nlUMin);
                plan(operands[0]);
            }
            break;
        case NodeKind::call:
            planCall(node);
            break;
        case NodeKind::foreign:
            assert(false);
            break;
    }
}

std::span<const NodeIndex> Emitter::flatOperandsOf(NodeIndex node) {
    const auto operands = store_.operandsOf(node);
    const auto isNested = [&](NodeIndex each) {
        return continues(store_, unscaled(store_, each), node);
    };
    if (std::none_of(operands.begin(), operands.end(), isNested)) return operands;
    flat_.clear();
    open_.assign(operands.rbegin(), operands.rend());
    while (!open_.empty()) {
        const NodeIndex operand = unscaled(store_, open_.back());
        open_.pop_back();
        if (continues(store_, operand, node)) {
            const auto inner = store_.operandsOf(operand);
            open_.insert(open_.end(), inner.rbegin(), inner.rend());
        } else {
            flat_.push_back(operand);
        }
    }
    return flat_;
}

Emitter::Forms Emitter::formsOf(NodeKind kind) {
    return kind == NodeKind::sum ? Forms{nlAdd, nlAddV, nlAddI} : Forms{nlMul, nlMulV, nlMulI};
}

void Emitter::planChain(std::span<const NodeIndex> operands, NodeKind kind) {
    assert(operands.size() >= 2);
    if (planMerged(operands, kind)) return;
    for (std::size_t k = operands.size() - 1; k >= 2; --k) planLink(operands[k], kind);
    // Two neighbours may change places without changing the value.
    const bool exchanges = isScale(store_, operands[0]) && !store_.isConstant(operands[1]);
    planLink(operands[exchanges ? 0 : 1], kind);
    plan(operands[exchanges ? 1 : 0]);
}

/// Readers that keep a chain as one long operation append what is below to an operation of the
/// same kind on top: were the chain below, all of it would be moved for each such operand. So the
/// longest of them begins the chain, and the others wait below until its end.
bool Emitter::planMerged(std::span<const NodeIndex> operands, NodeKind kind) {
    std::size_t longest = operands.size();
    std::size_t nbMerged = 0;
    for (std::size_t k = 0; k < operands.size(); ++k) {
        if (!readsAs(store_, operands[k], kind)) continue;
        ++nbMerged;
        if (longest == operands.size() || sizeBound(operands[k]) >= sizeBound(operands[longest]))
            longest = k;
    }
    if (nbMerged < 2) return false;
    for (std::size_t k = 1; k < nbMerged; ++k) plan(formsOf(kind).onStack);
    for (std::size_t k = operands.size(); k-- > 0;) {
        if (!readsAs(store_, operands[k], kind)) planLink(operands[k], kind);
    }
    plan(operands[longest]);
    for (std::size_t k = operands.size(); k-- > 0;) {
        if (k != longest && readsAs(store_, operands[k], kind)) plan(operands[k]);
    }
    return true;
}

/// Adds a term to, or multiplies by a factor, what is on the stack.
void Emitter::planLink(NodeIndex operand, NodeKind kind) {
    if (kind == NodeKind::sum) {
        planTerm(operand, /*isSubtracted=*/false);
    } else {
        planFactor(operand, formsOf(kind));
    }
}

/// Adds or subtracts `term` to what is on the stack.
void Emitter::planTerm(NodeIndex term, bool isSubtracted) {
    if (!isSubtracted && store_.kind(term) == NodeKind::negation) {
        planTerm(store_.operandsOf(term)[0], /*isSubtracted=*/true);
        return;
    }
    const ScaledNode scaled = asScaled(store_, term);
    if (scaled.node == noNode) {
        planFactor(term, isSubtracted ? Forms{nlSub, nlSubV, nlSubI} : formsOf(NodeKind::sum));
        return;
    }
    plan(nlMulIAdd, pool_.entryOf(isSubtracted ? -scaled.factor : scaled.factor));
    plan(scaled.node);
}

void Emitter::planFactor(NodeIndex factor, const Forms& forms) {
    if (store_.isVariable(factor)) {
        plan(forms.withVariable, factor + 1);
    } else if (isScale(store_, factor)) {
        plan(forms.withConstant, pool_.entryOf(store_.valueOf(factor)));
    } else {
        plan(forms.onStack);
        plan(factor);
    }
}

void Emitter::planCall(NodeIndex node) {
    const Function function = store_.functionOf(node);
    const auto code = static_cast<std::int32_t>(function);
    if (isFoldable(function)) {
        const auto arguments = flatOperandsOf(node);
        for (std::size_t k = arguments.size() - 1; k >= 1; --k) {
            plan(nlCallArg2, code);
            plan(arguments[k]);
        }
        plan(arguments[0]);
        return;
    }
    const auto arguments = store_.operandsOf(node);
    if (arguments.size() == 1 || arguments.size() == 2) {
        plan(arguments.size() == 1 ? nlCallArg1 : nlCallArg2, code);
    } else {
        plan(nlCallArgN, code);
        plan(nlFuncArgN, static_cast<std::int32_t>(arguments.size()));
    }
    for (std::size_t k = arguments.size(); k-- > 0;) plan(arguments[k]);
}

}  // namespace norv
