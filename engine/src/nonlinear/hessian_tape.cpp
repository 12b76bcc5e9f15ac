#include "nonlinear/hessian_tape.hpp"

#include <algorithm>
#include <unordered_map>

namespace engine {

/// Edge pushing on structure.
class HessianTape::Writer {
public:
    Writer(const SmoothGraph& graph, HessianTape& tape)
        : graph_(graph), tape_(tape), neighbour_(static_cast<std::size_t>(graph.nbNodes())) {}

    bool write() {
        for (std::int32_t node = graph_.nbNodes() - 1; node >= graph_.nbVariables(); --node) {
            create(node);
            for (const auto& [other, edge] : neighbour_[static_cast<std::size_t>(node)]) {
                other == node ? pushLoop(node, edge) : pushEdge(node, other, edge);
            }
            if (tape_.work() > largestTape) return false;
        }
        return true;
    }
    void readEntries() {
        for (std::int32_t row = 0; row < graph_.nbVariables(); ++row) {
            for (const auto& [column, edge] : neighbour_[static_cast<std::size_t>(row)]) {
                tape_.row_.push_back(row);
                tape_.column_.push_back(column);
                tape_.entryEdge_.push_back(edge);
            }
        }
    }
    [[nodiscard]] std::size_t nbEdges() const { return edges_.size(); }

private:
    struct End {
        std::int32_t node;
        std::int32_t edge;
    };

    /// The edge between two nodes; kept with the larger one.
    std::int32_t edgeOf(std::int32_t a, std::int32_t b) {
        const auto [smaller, larger] = std::minmax(a, b);
        const std::uint64_t key =
            static_cast<std::uint64_t>(larger) << 32U | static_cast<std::uint64_t>(smaller);
        const auto [place, isNew] =
            edges_.try_emplace(key, static_cast<std::int32_t>(edges_.size()));
        if (isNew) neighbour_[static_cast<std::size_t>(larger)].push_back({smaller, place->second});
        return place->second;
    }

    void create(std::int32_t node) {
        if (graph_.kindOf(node) != SmoothGraph::Kind::Function) return;
        const auto x = graph_.operandsOf(node);
        const LocalRule rule = graph_.ruleOf(node);
        const bool isFlatA = graph_.isFlat(node, 0);
        const bool isFlatB = x.size() < 2 || graph_.isFlat(node, 1);
        // Kinks have no curvature, and a product none by one factor alone.
        if (rule == absoluteRule || rule == largerRule || rule == smallerRule ||
            rule == distanceRule || rule == remainderRule) {
            return;
        }
        const bool isProduct = rule == productRule;
        if (!isFlatA && !isProduct) add(x[0], x[0], node, &LocalDerivatives::byAA);
        if (!isFlatA && !isFlatB) add(x[0], x[1], node, &LocalDerivatives::byAB);
        if (!isFlatB && !isProduct) add(x[1], x[1], node, &LocalDerivatives::byBB);
    }
    void add(std::int32_t a, std::int32_t b, std::int32_t node,
             double LocalDerivatives::*derivative) {
        tape_.create_.push_back({edgeOf(a, b), node, derivative});
    }

    /// The edge {node, other} goes over to the operands of `node`.
    void pushEdge(std::int32_t node, std::int32_t other, std::int32_t edge) {
        const auto x = graph_.operandsOf(node);
        for (std::size_t k = 0; k < x.size(); ++k) {
            if (graph_.isFlat(node, k)) continue;
            const auto slope = static_cast<std::int32_t>(graph_.firstOf(node) + k);
            // Once from each side where it closes to a loop.
            tape_.push_.push_back(
                {edgeOf(x[k], other), edge, slope, -1, x[k] == other ? 2.0 : 1.0});
        }
    }
    /// The loop at `node` goes over to all pairs of its operands.
    void pushLoop(std::int32_t node, std::int32_t edge) {
        const auto x = graph_.operandsOf(node);
        const auto first = static_cast<std::int32_t>(graph_.firstOf(node));
        for (std::size_t k = 0; k < x.size(); ++k) {
            if (graph_.isFlat(node, k)) continue;
            for (std::size_t l = 0; l <= k; ++l) {
                if (graph_.isFlat(node, l)) continue;
                const bool isTwice = l < k && x[k] == x[l];
                tape_.push_.push_back({edgeOf(x[k], x[l]), edge,
                                       first + static_cast<std::int32_t>(k),
                                       first + static_cast<std::int32_t>(l), isTwice ? 2.0 : 1.0});
            }
            if (tape_.work() > largestTape) return;
        }
    }

    const SmoothGraph& graph_;
    HessianTape& tape_;
    std::vector<std::vector<End>> neighbour_;
    std::unordered_map<std::uint64_t, std::int32_t> edges_;
};

HessianTape::HessianTape(const SmoothGraph& graph) {
    Writer writer(graph, *this);
    isWritten_ = writer.write();
    if (!isWritten_) {
        create_.clear();
        push_.clear();
        return;
    }
    writer.readEntries();
    weight_.assign(writer.nbEdges(), 0.0);
}

void HessianTape::compute(const SmoothGraph& graph, std::span<const double> adjoint,
                          std::span<double> values) {
    std::fill(weight_.begin(), weight_.end(), 0.0);
    const auto at = [](std::int32_t i) { return static_cast<std::size_t>(i); };
    for (const Creation& c : create_) {
        weight_[at(c.target)] += adjoint[at(c.node)] * graph.secondOf(c.node).*c.derivative;
    }
    for (const Push& p : push_) {
        const double second = p.second < 0 ? 1.0 : graph.slopeAt(at(p.second));
        weight_[at(p.target)] +=
            p.factor * graph.slopeAt(at(p.first)) * second * weight_[at(p.source)];
    }
    for (std::size_t k = 0; k < values.size(); ++k) values[k] = weight_[at(entryEdge_[k])];
}

}  // namespace engine
