#include "global/safe_bound.hpp"

#include <algorithm>
#include <cmath>

#include "operators/range.hpp"

namespace engine {

SafeBound safeBoundOf(const LinearModel& model, std::span<const double> cost, const Box& box,
                      std::span<const double> multipliers, RowSides sides) {
    SafeBound bound{-infinity, std::vector<double>(model.nbColumns(), 0.0)};
    if (multipliers.size() != model.nbRows()) return bound;
    std::vector<RangeSum> reduced(model.nbColumns());
    for (std::size_t j = 0; j < model.nbColumns(); ++j) reduced[j].add({cost[j], cost[j], false});
    RangeSum total;
    for (std::size_t i = 0; i < model.nbRows(); ++i) {
        const double y = multipliers[i];
        if (y == 0.0 || !std::isfinite(y)) continue;
        double side = y > 0.0 ? model.rowLower[i] : model.rowUpper[i];
        // Solvers leave tiny multipliers of the wrong sign: a row without that side has no say.
        if (std::isinf(side)) continue;
        if (sides == RowSides::Relaxed) {
            const double tolerance = model.tolerance[i];
            side = y > 0.0 ? below(side - tolerance) : above(side + tolerance);
        }
        total.add(widened(product({y, y, false}, {side, side, false}), 2.0));
        for (auto k = model.rowStart[i]; k < model.rowStart[i + 1]; ++k) {
            const auto entry = static_cast<std::size_t>(k);
            const double c = model.coefficient[entry];
            reduced[static_cast<std::size_t>(model.column[entry])].add(
                widened(product({-y, -y, false}, {c, c, false}), 2.0));
        }
    }
    for (std::size_t j = 0; j < model.nbColumns(); ++j) {
        const Range d = reduced[j].total();
        total.add(widened(product(d, {box.lower[j], box.upper[j], false}), 2.0));
        bound.reducedCost[j] = d.lower > 0.0 ? d.lower : std::min(d.upper, 0.0);
    }
    bound.lower = total.total().lower;
    return bound;
}

}  // namespace engine
