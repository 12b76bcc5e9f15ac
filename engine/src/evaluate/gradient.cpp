#include "evaluate/gradient.hpp"

#include "operators/operator_row.hpp"

namespace engine {

void Gradient::accumulate(std::span<const Value> values) {
    for (std::size_t k = model_.order.size(); k-- > 0;) pass(model_.order[k], values);
}

void Gradient::pass(ExpressionIndex e, std::span<const Value> values) {
    const double weight = adjoints_.of(e);
    if (weight == 0.0) return;
    rowOf(model_.operatorOf(e)).slope(ValueOperands(model_, e, values), weight, adjoints_);
}

}  // namespace engine
