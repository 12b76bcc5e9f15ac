#include "search/inverse.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "engine/model_builder.hpp"

namespace engine {
namespace {

using testing::ModelBuilder;

/// The expression under test over x = 3 in [-100, 100], y = 2 in [1, 50], n = 4 in [0, 9] and the
/// boolean c = 0.
struct Case {
    const char* what;
    ExpressionIndex (*build)(ModelBuilder&, ExpressionIndex x, ExpressionIndex y, ExpressionIndex n,
                             ExpressionIndex c);
    double wanted;
};

#define EXPRESSION(body)                                                                        \
    [](ModelBuilder& b, [[maybe_unused]] ExpressionIndex x, [[maybe_unused]] ExpressionIndex y, \
       [[maybe_unused]] ExpressionIndex n, [[maybe_unused]] ExpressionIndex c) { return body; }

const Case cases[] = {
    {"sum", EXPRESSION(b.apply(LS_OP_SUM, {x, y})), 11.0},
    {"absorbed products",
     EXPRESSION(b.apply(LS_OP_SUM, {b.apply(LS_OP_PROD, {x, b.constant(-2.0)}),
                                    b.apply(LS_OP_PROD, {b.constant(3.0), y})})),
     25.0},
    {"sub", EXPRESSION(b.apply(LS_OP_SUB, {x, y})), -7.0},
    {"prod", EXPRESSION(b.apply(LS_OP_PROD, {x, y, b.constant(2)})), 20.0},
    {"square", EXPRESSION(b.apply(LS_OP_PROD, {x, x, y})), 50.0},
    {"prod out of zero", EXPRESSION(b.apply(LS_OP_PROD, {c, x})), 3.0},
    {"max up", EXPRESSION(b.apply(LS_OP_MAX, {x, y})), 9.0},
    {"max down", EXPRESSION(b.apply(LS_OP_MAX, {x, b.constant(1.0)})), 2.0},
    {"min up", EXPRESSION(b.apply(LS_OP_MIN, {y, b.constant(9.0)})), 5.0},
    {"min down", EXPRESSION(b.apply(LS_OP_MIN, {x, y})), -4.0},
    {"abs", EXPRESSION(b.apply(LS_OP_ABS, {x})), 7.0},
    {"dist", EXPRESSION(b.apply(LS_OP_DIST, {x, y})), 6.0},
    {"div", EXPRESSION(b.apply(LS_OP_DIV, {x, y})), 0.75},
    {"mod", EXPRESSION(b.apply(LS_OP_MOD, {x, b.constant(5.0)})), 1.0},
    {"round", EXPRESSION(b.apply(LS_OP_ROUND, {x})), 8.0},
    {"sqrt", EXPRESSION(b.apply(LS_OP_SQRT, {y})), 3.0},
    {"log", EXPRESSION(b.apply(LS_OP_LOG, {y})), 2.0},
    {"exp", EXPRESSION(b.apply(LS_OP_EXP, {x})), 0.5},
    {"pow", EXPRESSION(b.apply(LS_OP_POW, {y, b.constant(3)})), 30.0},
    {"exponent", EXPRESSION(b.apply(LS_OP_POW, {b.constant(2.0), x})), 10.0},
    {"cos", EXPRESSION(b.apply(LS_OP_COS, {x})), 0.25},
    {"sin", EXPRESSION(b.apply(LS_OP_SIN, {x})), -0.5},
    {"tan", EXPRESSION(b.apply(LS_OP_TAN, {x})), 2.0},
    {"if", EXPRESSION(b.apply(LS_OP_IF, {c, b.constant(5.0), x})), 5.0},
    {"element",
     EXPRESSION(
         b.apply(LS_OP_AT, {b.apply(LS_OP_ARRAY, {b.constant(7), b.constant(8), b.constant(9),
                                                  b.constant(1), b.constant(2)}),
                            n})),
     9.0},
    {"scalar product",
     EXPRESSION(b.apply(LS_OP_SCALARPROD, {b.apply(LS_OP_ARRAY, {x, y}),
                                           b.apply(LS_OP_ARRAY, {b.constant(2.0), n})})),
     20.0},
    {"relation as a number", EXPRESSION(b.apply(LS_OP_GEQ, {n, b.constant(6)})), 1.0},
    {"out of a domain error",
     EXPRESSION(b.apply(LS_OP_LOG, {b.apply(LS_OP_SUB, {x, b.constant(3.0)})})), 0.0},
    {"and", EXPRESSION(b.apply(LS_OP_AND, {c, b.apply(LS_OP_LT, {y, x})})), 1.0},
    {"or", EXPRESSION(b.apply(LS_OP_OR, {c, b.apply(LS_OP_NEQ, {n, b.constant(4)})})), 1.0},
    {"xor", EXPRESSION(b.apply(LS_OP_XOR, {c, b.apply(LS_OP_EQ, {n, b.constant(4)})})), 0.0},
    {"not", EXPRESSION(b.apply(LS_OP_NOT, {b.apply(LS_OP_LEQ, {x, y})})), 0.0},
    {"strict between doubles", EXPRESSION(b.apply(LS_OP_GT, {y, x})), 1.0},
};

TEST(InverseWalk, OneMoveReachesTheGoalThroughEveryOperator) {
    for (const Case& c : cases) {
        ModelBuilder b;
        const ExpressionIndex x = b.real(-100.0, 100.0);
        const ExpressionIndex y = b.real(1.0, 50.0);
        const ExpressionIndex n = b.integer(0.0, 9.0);
        const ExpressionIndex e = c.build(b, x, y, n, b.boolean());
        b.minimise(e);
        const ClosedModel model = b.close();
        Evaluator evaluator(model);
        evaluator.reset(
            {Value::ofDouble(3.0), Value::ofDouble(2.0), Value::ofInt(4), Value::ofInt(0)});
        Random random(1);
        InverseWalk walk(evaluator, model.domain, random);
        bool reached = false;
        for (int draw = 0; draw < 60 && !reached; ++draw) {
            const auto move = walk.propose(e, Goal::ofNumber(c.wanted, 0));
            if (!move) continue;
            const Evaluator::Mark mark = evaluator.mark();
            evaluator.set(move->decision, move->value);
            evaluator.propagate();
            reached = std::fabs(evaluator.valueOf(e).asDouble() - c.wanted) < 1e-9;
            evaluator.undoTo(mark);
        }
        EXPECT_TRUE(reached) << c.what;
    }
}

TEST(InverseWalk, RoundsToTheSideTheGoalAsksForAndNeverStandsStill) {
    const struct {
        const char* what;
        double number;
        int direction;
        std::int64_t expected;
    } rounding[] = {
        {"at most", 6.7, -1, 6},
        {"at least", 6.3, 1, 7},
        {"nearest", 6.4, 0, 6},
        {"a step up at least", 4.2, 0, 5},
        {"a step down at least", 3.9, 0, 3},
        {"not beyond the bound", 4e18, 0, 9},
        {"rounding noise is none", 6.0000000001, 1, 6},
    };
    ModelBuilder b;
    b.integer(0.0, 9.0);
    const ClosedModel model = b.close();
    Evaluator evaluator(model);
    evaluator.reset({Value::ofInt(4)});
    Random random(1);
    const InverseWalk walk(evaluator, model.domain, random);
    for (const auto& c : rounding) {
        EXPECT_EQ(walk.valueInDomain(0, c.number, c.direction).asInt(), c.expected) << c.what;
    }
}

}  // namespace
}  // namespace engine
