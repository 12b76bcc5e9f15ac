#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "back_ends/simplex.hpp"
#include "global/relaxation.hpp"

namespace engine {

/// The restrictions that lead from the root to a box.
struct BoxPath {
    std::shared_ptr<const BoxPath> parent;
    std::vector<ValueLimit> restrictions;
};

/// The split that a box came from, for what it teaches.
struct Split {
    std::int32_t column = noColumn;
    bool isUpper = false;
    double distance = 0.0;  ///< in the measure of the branching rule
};

/// A box that waits.
struct BoxNode {
    double bound;  ///< no point inside costs less
    std::int32_t depth = 0;
    std::int64_t number = 0;  ///< in the order of making
    std::shared_ptr<const BoxPath> path{};
    std::shared_ptr<const SimplexBasis> basis{};     ///< of its parent, or none
    std::shared_ptr<const std::vector<Cut>> cuts{};  ///< that hold in it, or none
    Split split{};
};

/// Waiting boxes, the least bound first; the deepest first when there are too many of them.
class NodeQueue {
public:
    explicit NodeQueue(std::size_t mostNodes) : mostNodes_(mostNodes) {}

    void push(BoxNode node);
    /// Not empty.
    BoxNode pop();
    [[nodiscard]] bool isEmpty() const { return nodes_.empty(); }
    [[nodiscard]] std::size_t size() const { return nodes_.size(); }
    /// No box that waits costs less; infinity when nothing waits. The least bound itself, but
    /// while there are too many the one of when there came to be. O(1).
    [[nodiscard]] double leastBound() const;
    /// Drops what costs `cutoff` or more.
    void dropFrom(double cutoff);

private:
    [[nodiscard]] bool isLater(const BoxNode& a, const BoxNode& b) const;
    void order();

    std::vector<BoxNode> nodes_;  ///< a heap
    std::size_t mostNodes_;
    bool isFull_ = false;
    double leastWhenFull_ = 0.0;  ///< children cost no less than their parents
};

}  // namespace engine
