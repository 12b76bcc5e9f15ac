#include "global/node_queue.hpp"

#include <algorithm>
#include <tuple>

namespace engine {

bool NodeQueue::isLater(const BoxNode& a, const BoxNode& b) const {
    if (isFull_) return std::tuple(-a.depth, a.number) > std::tuple(-b.depth, b.number);
    return std::tuple(a.bound, -a.depth, a.number) > std::tuple(b.bound, -b.depth, b.number);
}

void NodeQueue::order() {
    std::make_heap(nodes_.begin(), nodes_.end(),
                   [this](const BoxNode& a, const BoxNode& b) { return isLater(a, b); });
}

void NodeQueue::push(BoxNode node) {
    nodes_.push_back(std::move(node));
    std::push_heap(nodes_.begin(), nodes_.end(),
                   [this](const BoxNode& a, const BoxNode& b) { return isLater(a, b); });
    if (isFull_ || nodes_.size() < mostNodes_) return;
    leastWhenFull_ = leastBound();
    isFull_ = true;
    order();
}

BoxNode NodeQueue::pop() {
    std::pop_heap(nodes_.begin(), nodes_.end(),
                  [this](const BoxNode& a, const BoxNode& b) { return isLater(a, b); });
    BoxNode node = std::move(nodes_.back());
    nodes_.pop_back();
    if (isFull_ && nodes_.size() < mostNodes_ / 2) {
        isFull_ = false;
        order();
    }
    return node;
}

double NodeQueue::leastBound() const {
    if (nodes_.empty()) return infinity;
    return isFull_ ? leastWhenFull_ : nodes_.front().bound;
}

void NodeQueue::dropFrom(double cutoff) {
    std::erase_if(nodes_, [cutoff](const BoxNode& node) { return node.bound >= cutoff; });
    order();
}

}  // namespace engine
