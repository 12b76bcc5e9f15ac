#pragma once

#include <cstdint>
#include <initializer_list>
#include <numeric>
#include <span>
#include <vector>

#include "model/closed_model.hpp"

namespace engine::testing {

/// Writes closed models by hand, operands before their users.
class ModelBuilder {
public:
    ExpressionIndex constant(Value v) {
        const ExpressionIndex e = make(LS_OP_CONST, {}, !v.isInt());
        model_.constantValue.back() = v;
        return e;
    }
    ExpressionIndex constant(int v) { return constant(Value::ofInt(v)); }
    ExpressionIndex constant(double v) { return constant(Value::ofDouble(v)); }
    ExpressionIndex boolean() { return decision(LS_OP_BOOL, 0.0, 1.0); }
    ExpressionIndex integer(double lower, double upper) {
        return decision(LS_OP_INT, lower, upper);
    }
    ExpressionIndex real(double lower, double upper) { return decision(LS_OP_FLOAT, lower, upper); }
    ExpressionIndex apply(ls_operator op, std::span<const ExpressionIndex> operands) {
        return make(op, operands, /*isDouble=*/false);
    }
    ExpressionIndex apply(ls_operator op, std::initializer_list<ExpressionIndex> operands) {
        return apply(op, std::span(operands.begin(), operands.size()));
    }
    /// sum of coefficient times expression.
    template <typename Number>
    ExpressionIndex linear(std::span<const ExpressionIndex> x,
                           std::span<const Number> coefficients) {
        std::vector<ExpressionIndex> terms;
        for (std::size_t k = 0; k < x.size(); ++k) {
            terms.push_back(apply(LS_OP_PROD, {x[k], constant(coefficients[k])}));
        }
        return apply(LS_OP_SUM, terms);
    }
    void require(ExpressionIndex e) { model_.constraint.push_back(e); }
    void minimise(ExpressionIndex e) { model_.objective.push_back({e, /*maximise=*/false}); }
    void maximise(ExpressionIndex e) { model_.objective.push_back({e, /*maximise=*/true}); }

    ClosedModel close() {
        const std::size_t n = model_.op.size();
        model_.firstOperand.push_back(static_cast<std::int32_t>(model_.operand.size()));
        model_.order.resize(n);
        std::iota(model_.order.begin(), model_.order.end(), 0);
        model_.rank = model_.order;
        model_.firstUser.assign(n + 1, 0);
        for (const ExpressionIndex x : model_.operand) ++model_.firstUser[index(x) + 1];
        std::partial_sum(model_.firstUser.begin(), model_.firstUser.end(),
                         model_.firstUser.begin());
        model_.user.resize(model_.operand.size());
        std::vector<std::int32_t> next = model_.firstUser;
        for (std::size_t e = 0; e < n; ++e) {
            for (const ExpressionIndex x : model_.operandsOf(static_cast<ExpressionIndex>(e))) {
                model_.user[index(next[index(x)]++)] = static_cast<ExpressionIndex>(e);
            }
        }
        return model_;
    }

private:
    static std::size_t index(std::int32_t i) { return static_cast<std::size_t>(i); }

    ExpressionIndex make(ls_operator op, std::span<const ExpressionIndex> operands, bool isDouble) {
        model_.firstOperand.push_back(static_cast<std::int32_t>(model_.operand.size()));
        model_.operand.insert(model_.operand.end(), operands.begin(), operands.end());
        model_.op.push_back(static_cast<std::uint8_t>(op));
        model_.isDouble.push_back(isDouble ? 1 : 0);
        model_.constantValue.emplace_back();
        model_.decisionOf.push_back(-1);
        return static_cast<ExpressionIndex>(model_.op.size()) - 1;
    }
    ExpressionIndex decision(ls_operator op, double lower, double upper) {
        const ExpressionIndex e = make(op, {}, op == LS_OP_FLOAT);
        model_.decisionOf.back() = model_.nbDecisions();
        model_.decision.push_back(e);
        model_.domain.push_back({lower, upper});
        return e;
    }

    ClosedModel model_;
};

}  // namespace engine::testing
