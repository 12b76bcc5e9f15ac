#include "search/polish.hpp"

#include <cstdint>
#include <utility>

#include "search/restoration.hpp"

namespace engine {
namespace {

constexpr std::size_t mostOperands = 50'000;
constexpr std::int64_t mostWork = 5'000'000;
/// Scaled excess of the relations below which there is nothing to gain.
constexpr double tight = 1e-9;

}  // namespace

std::optional<Point> polished(const ClosedModel& model, const std::vector<Interval>& domain,
                              const Point& point) {
    if (model.operand.size() > mostOperands) return std::nullopt;
    std::vector<DecisionIndex> floats;
    for (DecisionIndex d = 0; d < model.nbDecisions(); ++d) {
        const Interval& interval = domain[static_cast<std::size_t>(d)];
        if (!model.isDiscrete(d) && interval.lower < interval.upper) floats.push_back(d);
    }
    Evaluator evaluator(model);
    evaluator.reset(point);
    Restoration restoration(model, domain);
    restoration.start(point, restrictionsAt(evaluator), std::move(floats));
    const double before = restoration.excess();
    while (restoration.isRunning() && restoration.work() < mostWork) restoration.advance();
    constexpr double muchLess = 0.1;
    if (before <= tight || restoration.excess() > muchLess * before) return std::nullopt;
    std::vector<Value> values;
    if (!judge(model, restoration.point(), values).feasible) return std::nullopt;
    return restoration.point();
}

}  // namespace engine
