#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "nonlinear/smooth_graph.hpp"

namespace engine {

/// The Hessian of a weighted sum of nodes by edge pushing (Gower and Mello, "A new framework for
/// the computation of Hessians", Optimization Methods and Software 27, 2012, algorithm 3).
///
/// The algorithm runs once on structure alone and writes down what it would compute: which edge of
/// the nonlinear interaction graph gets which multiple of which other one. Later Hessians follow
/// this tape, without any search for edges. Kinks have no curvature.
class HessianTape {
public:
    /// Tapes longer than that are not written: [steps].
    static constexpr std::size_t largestTape = 5'000'000;

    /// @param graph  reduced to what it is to hold.
    explicit HessianTape(const SmoothGraph& graph);

    /// False: it would be too long, and there is no Hessian.
    [[nodiscard]] bool isWritten() const { return isWritten_; }
    /// Lower triangle, by row and column (row >= column), without order or duplicates.
    [[nodiscard]] std::span<const std::int32_t> rows() const { return row_; }
    [[nodiscard]] std::span<const std::int32_t> columns() const { return column_; }
    /// Steps of one computation.
    [[nodiscard]] std::size_t work() const { return push_.size() + create_.size(); }

    /// @param graph    the same, differentiated.
    /// @param adjoint  [nbNodes] derivatives of the weighted sum by all nodes.
    /// @param values   receives the entries, [rows().size()].
    void compute(const SmoothGraph& graph, std::span<const double> adjoint,
                 std::span<double> values);

private:
    /// weight[target] += factor * slope[first] * slope[second] * weight[source]; second < 0: 1.
    struct Push {
        std::int32_t target;
        std::int32_t source;
        std::int32_t first;
        std::int32_t second;
        double factor;
    };
    /// weight[target] += adjoint[node] * one of its second derivatives.
    struct Creation {
        std::int32_t target;
        std::int32_t node;
        double LocalDerivatives::*derivative;
    };
    class Writer;

    std::vector<Creation> create_;
    std::vector<Push> push_;
    std::vector<double> weight_;  ///< of all edges ever seen
    std::vector<std::int32_t> row_;
    std::vector<std::int32_t> column_;
    std::vector<std::int32_t> entryEdge_;  ///< [rows().size()]
    bool isWritten_ = true;
};

}  // namespace engine
