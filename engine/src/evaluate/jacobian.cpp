#include "evaluate/jacobian.hpp"

#include <algorithm>

namespace engine {

void Jacobian::clearRows() {
    row_.clear();
    cone_.clear();
    work_ = 0;
}

void Jacobian::addRow(ExpressionIndex plus, ExpressionIndex minus, double factor) {
    const auto begin = static_cast<std::ptrdiff_t>(cone_.size());
    visit(plus);
    if (minus >= 0) visit(minus);
    for (auto it = cone_.begin() + begin; it != cone_.end(); ++it) {
        isSeen_[static_cast<std::size_t>(*it)] = 0;
    }
    std::sort(cone_.begin() + begin, cone_.end(), [this](ExpressionIndex a, ExpressionIndex b) {
        return model_.rank[static_cast<std::size_t>(a)] > model_.rank[static_cast<std::size_t>(b)];
    });
    row_.push_back({plus, minus, factor, cone_.size()});
}

void Jacobian::visit(ExpressionIndex root) {
    open_.push_back(root);
    while (!open_.empty()) {
        const ExpressionIndex e = open_.back();
        open_.pop_back();
        if (isSeen_[static_cast<std::size_t>(e)] != 0) continue;
        isSeen_[static_cast<std::size_t>(e)] = 1;
        cone_.push_back(e);
        const auto operands = model_.operandsOf(e);
        work_ += 1 + operands.size();
        open_.insert(open_.end(), operands.begin(), operands.end());
    }
}

const SparseRows& Jacobian::compute(std::span<const Value> values,
                                    std::span<const std::int32_t> columnOf) {
    result_.start.assign(1, 0);
    result_.column.clear();
    result_.coefficient.clear();
    isComplete_.clear();
    std::size_t begin = 0;
    for (const Row& row : row_) {
        const auto cone = std::span(cone_).subspan(begin, row.end - begin);
        begin = row.end;
        gradient_.addWeight(row.plus, row.factor);
        if (row.minus >= 0) gradient_.addWeight(row.minus, -row.factor);
        gradient_.accumulateAlong(cone, values);
        for (const ExpressionIndex e : cone) {
            const double derivative = gradient_.take(e);
            const DecisionIndex d = model_.decisionOf[static_cast<std::size_t>(e)];
            if (d < 0 || derivative == 0.0) continue;
            const std::int32_t column = columnOf[static_cast<std::size_t>(d)];
            if (column < 0) continue;
            result_.column.push_back(column);
            result_.coefficient.push_back(derivative);
        }
        isComplete_.push_back(gradient_.takeCompleteness() ? 1 : 0);
        result_.start.push_back(result_.column.size());
    }
    return result_;
}

}  // namespace engine
