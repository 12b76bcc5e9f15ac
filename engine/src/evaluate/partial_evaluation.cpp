#include "evaluate/partial_evaluation.hpp"

#include <algorithm>

#include "operators/operator_row.hpp"

namespace engine {

void PartialEvaluation::setTargets(std::span<const ExpressionIndex> targets) {
    std::fill(isNeeded_.begin(), isNeeded_.end(), 0);
    for (const ExpressionIndex e : targets) isNeeded_[static_cast<std::size_t>(e)] = 1;
    order_.clear();
    for (auto it = model_.order.rbegin(); it != model_.order.rend(); ++it) {
        const auto i = static_cast<std::size_t>(*it);
        if (isNeeded_[i] == 0 || model_.decisionOf[i] >= 0) continue;
        if (model_.operatorOf(*it) == LS_OP_CONST) continue;
        order_.push_back(*it);
        for (const ExpressionIndex x : model_.operandsOf(*it)) {
            isNeeded_[static_cast<std::size_t>(x)] = 1;
        }
    }
    std::reverse(order_.begin(), order_.end());
}

void PartialEvaluation::evaluate(std::vector<Value>& values) const {
    for (const ExpressionIndex e : order_) {
        values[static_cast<std::size_t>(e)] = computeValue(model_, e, values);
    }
}

}  // namespace engine
