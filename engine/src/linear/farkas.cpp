#include "linear/farkas.hpp"

#include <cmath>
#include <vector>

#include "operators/range.hpp"

namespace engine {
namespace {

/// `sign` times the multipliers: does the combination ask for more than the box can give?
bool exceedsBox(const LinearModel& model, const Box& box, std::span<const double> multipliers,
                double sign) {
    RangeSum demand;
    std::vector<RangeSum> combined(model.nbColumns());
    for (std::size_t i = 0; i < model.nbRows(); ++i) {
        const double y = sign * multipliers[i];
        if (y == 0.0 || !std::isfinite(y)) continue;
        // y > 0 asks the row to be at least its lower side, y < 0 minus the row at least its upper.
        const double side = y > 0.0 ? model.rowLower[i] : model.rowUpper[i];
        // Solvers leave tiny multipliers of the wrong sign: a row without that side has no say.
        if (std::isinf(side)) continue;
        const double relaxed =
            y > 0.0 ? below(side - model.tolerance[i]) : above(side + model.tolerance[i]);
        demand.add(widened(product({y, y, false}, {relaxed, relaxed, false}), 2.0));
        for (auto k = model.rowStart[i]; k < model.rowStart[i + 1]; ++k) {
            const auto entry = static_cast<std::size_t>(k);
            const double c = model.coefficient[entry];
            combined[static_cast<std::size_t>(model.column[entry])].add(
                widened(product({y, y, false}, {c, c, false}), 2.0));
        }
    }
    RangeSum supply;
    for (std::size_t j = 0; j < model.nbColumns(); ++j) {
        supply.add(widened(product(combined[j].total(), {box.lower[j], box.upper[j], false}), 2.0));
    }
    return supply.total().upper < demand.total().lower;
}

}  // namespace

bool provesInfeasibility(const LinearModel& model, const Box& box,
                         std::span<const double> multipliers) {
    return multipliers.size() == model.nbRows() &&
           (exceedsBox(model, box, multipliers, 1.0) || exceedsBox(model, box, multipliers, -1.0));
}

}  // namespace engine
