#include "evaluate/gradient.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "engine/model_builder.hpp"
#include "evaluate/jacobian.hpp"
#include "evaluate/judge.hpp"

namespace engine {
namespace {

using testing::ModelBuilder;

TEST(Gradient, AgreesWithDifferenceQuotientsForEveryOperator) {
    ModelBuilder b;
    const ExpressionIndex x = b.real(0.0, 9.0);
    const ExpressionIndex y = b.real(0.0, 9.0);
    const ExpressionIndex array = b.apply(LS_OP_ARRAY, {x, b.constant(2.0), y});
    const ExpressionIndex product = b.apply(LS_OP_PROD, {x, y, x, b.constant(0.5)});
    const ExpressionIndex functions[] = {
        b.apply(LS_OP_SUM, {x, x, y}),
        b.apply(LS_OP_SUB, {x, product}),
        product,
        b.apply(LS_OP_MAX, {x, y, product}),
        b.apply(LS_OP_MIN, {x, y, product}),
        b.apply(LS_OP_IF, {b.apply(LS_OP_GEQ, {x, y}), y, product}),
        b.apply(LS_OP_ABS, {b.apply(LS_OP_SUB, {x, b.constant(8.0)})}),
        b.apply(LS_OP_DIST, {x, y}),
        b.apply(LS_OP_DIV, {x, product}),
        b.apply(LS_OP_MOD, {product, b.constant(1.5)}),
        b.apply(LS_OP_AT, {array, b.constant(2)}),
        b.apply(LS_OP_SCALARPROD, {array, array}),
        b.apply(LS_OP_SQRT, {product}),
        b.apply(LS_OP_LOG, {product}),
        b.apply(LS_OP_EXP, {x}),
        b.apply(LS_OP_POW, {x, y}),
        b.apply(LS_OP_COS, {product}),
        b.apply(LS_OP_SIN, {product}),
        b.apply(LS_OP_TAN, {x}),
        b.apply(LS_OP_ROUND, {product}),
    };
    const ClosedModel model = b.close();
    const double at[] = {1.3, 2.2};
    const auto values = [&model](double first, double second) {
        std::vector<Value> all;
        judge(model, {Value::ofDouble(first), Value::ofDouble(second)}, all);
        return all;
    };
    Gradient gradient(model);
    Jacobian jacobian(model);
    for (const ExpressionIndex e : functions) jacobian.addRow(e, x, 3.0);
    const std::int32_t columnOf[] = {0, 1};
    const SparseRows& rows = jacobian.compute(values(at[0], at[1]), columnOf);
    constexpr double h = 1e-6;
    const std::vector<Value> higher[] = {values(at[0] + h, at[1]), values(at[0], at[1] + h)};
    const std::vector<Value> lower[] = {values(at[0] - h, at[1]), values(at[0], at[1] - h)};
    for (std::size_t row = 0; row < std::size(functions); ++row) {
        const ExpressionIndex e = functions[row];
        gradient.clear();
        gradient.addWeight(e, 3.0);
        gradient.accumulate(values(at[0], at[1]));
        for (const std::size_t d : {0U, 1U}) {
            const auto i = static_cast<std::size_t>(e);
            const double quotient = (higher[d][i].asDouble() - lower[d][i].asDouble()) / (2.0 * h);
            EXPECT_NEAR(gradient.byDecision(static_cast<DecisionIndex>(d)), 3.0 * quotient, 1e-6)
                << "operator " << model.operatorOf(e);
            const double unit[] = {d == 0 ? 1.0 : 0.0, d == 1 ? 1.0 : 0.0};
            const double own = d == 0 ? 3.0 : 0.0;
            EXPECT_NEAR(rows.timesVector(row, unit),
                        gradient.byDecision(static_cast<DecisionIndex>(d)) - own, 1e-12)
                << "the Jacobian's row of operator " << model.operatorOf(e);
        }
    }
}

}  // namespace
}  // namespace engine
