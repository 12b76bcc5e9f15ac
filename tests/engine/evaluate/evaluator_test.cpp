#include "evaluate/evaluator.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "engine/model_builder.hpp"
#include "engine/prove/model_text.hpp"
#include "operators/random.hpp"

namespace engine {
namespace {

using testing::ModelBuilder;

std::size_t arityOf(ls_operator op, Random& random) {
    switch (op) {
        case LS_OP_SUM:
        case LS_OP_PROD:
        case LS_OP_AND:
        case LS_OP_OR:
        case LS_OP_XOR:
            return random.below(5);
        case LS_OP_MAX:
        case LS_OP_MIN:
        case LS_OP_ARRAY:
            return 1 + random.below(4);
        case LS_OP_IF:
            return 3;
        default:
            return op == LS_OP_SUB || op == LS_OP_DIST || op == LS_OP_DIV || op == LS_OP_MOD ||
                           op == LS_OP_POW || (op >= LS_OP_EQ && op <= LS_OP_LT)
                       ? 2
                       : 1;
    }
}

/// A graph over all operators; every expression can be used by later ones, arrays only where an
/// array is asked for.
ClosedModel randomModel(Random& random) {
    ModelBuilder b;
    std::vector<ExpressionIndex> pool;
    std::vector<ExpressionIndex> arrays;
    for (int k = 0; k < 4; ++k) {
        pool.push_back(b.boolean());
        pool.push_back(b.integer(-5.0, 5.0));
        pool.push_back(b.real(-3.0, 3.0));
        pool.push_back(b.constant(k - 1));
        pool.push_back(b.constant(0.75 * k));
    }
    pool.push_back(b.constant(Value::ofInt(INT64_MAX / 2)));
    const auto any = [&] { return pool[random.below(pool.size())]; };
    for (int k = 0; k < 60; ++k) {
        const auto op =
            static_cast<ls_operator>(LS_OP_SUM + random.below(LS_OP_TAN - LS_OP_SUM + 1));
        std::vector<ExpressionIndex> operands;
        if (op == LS_OP_AT || op == LS_OP_SCALARPROD) {
            if (arrays.empty()) continue;
            operands = {arrays[random.below(arrays.size())],
                        op == LS_OP_AT ? any() : arrays[random.below(arrays.size())]};
        } else {
            for (std::size_t n = arityOf(op, random); n > 0; --n) operands.push_back(any());
        }
        const ExpressionIndex e = b.apply(op, operands);
        (op == LS_OP_ARRAY ? arrays : pool).push_back(e);
        if (random.chance(0.3) && op != LS_OP_ARRAY) b.require(e);
        // The shape that sums absorb.
        pool.push_back(b.apply(LS_OP_SUM, {b.apply(LS_OP_PROD, {any(), b.constant(-2)}), any()}));
    }
    b.minimise(pool.back());
    return b.close();
}

Value randomValue(const ClosedModel& model, std::size_t d, Random& random) {
    const Interval domain = model.domain[d];
    const double v = domain.lower + (domain.upper - domain.lower) * random.unit();
    if (!model.isDiscrete(static_cast<DecisionIndex>(d))) return Value::ofDouble(v);
    return Value::ofInt(std::llround(v));
}

bool agree(Value a, Value b) {
    if (a.isInt() != b.isInt()) return false;
    if (a.isInt()) return a.asInt() == b.asInt();
    const double x = a.asDouble();
    const double y = b.asDouble();
    if (std::isnan(x) || std::isnan(y)) return std::isnan(x) && std::isnan(y);
    return x == y ||
           std::fabs(x - y) <= 1e-9 * std::fmax(1.0, std::fmax(std::fabs(x), std::fabs(y)));
}

/// Compares every value and every violation with those from scratch.
void expectTwin(const Evaluator& evaluator, const ClosedModel& model, const Point& point) {
    std::vector<Value> values;
    judge(model, point, values);
    for (ExpressionIndex e = 0; e < model.nbExpressions(); ++e) {
        if (model.operatorOf(e) == LS_OP_ARRAY) continue;
        ASSERT_TRUE(agree(evaluator.valueOf(e), values[static_cast<std::size_t>(e)]))
            << "expression " << e << " operator " << model.operatorOf(e) << ": "
            << evaluator.valueOf(e).asDouble() << " instead of "
            << values[static_cast<std::size_t>(e)].asDouble();
    }
    Evaluator fresh(model);
    fresh.reset(point);
    for (std::size_t k = 0; k < fresh.plan().constraints().size(); ++k) {
        const bool holds = values[static_cast<std::size_t>(fresh.plan().constraints()[k])].isTrue();
        ASSERT_EQ(evaluator.ledger().isViolated(k), !holds) << "constraint " << k;
        ASSERT_NEAR(evaluator.ledger().violationOf(k), fresh.ledger().violationOf(k),
                    1e-6 * (1.0 + fresh.ledger().violationOf(k)))
            << "constraint " << k;
    }
}

void moveSome(Evaluator& evaluator, const ClosedModel& model, Point& point, Random& random) {
    for (std::size_t n = 1 + random.below(3); n > 0; --n) {
        const std::size_t d = random.below(point.size());
        point[d] = randomValue(model, d, random);
        evaluator.set(static_cast<DecisionIndex>(d), point[d]);
    }
    evaluator.propagate();
}

TEST(Evaluator, AgreesWithTheJudgeThroughMovesNestedUndosAndCommits) {
    for (std::uint64_t seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const ClosedModel model = randomModel(random);
        Point point(model.decision.size());
        for (std::size_t d = 0; d < point.size(); ++d) point[d] = randomValue(model, d, random);
        Evaluator evaluator(model);
        evaluator.reset(point);
        for (int round = 0; round < 60; ++round) {
            const Evaluator::Mark outer = evaluator.mark();
            Point afterFirst = point;
            moveSome(evaluator, model, afterFirst, random);
            const Evaluator::Mark inner = evaluator.mark();
            Point afterSecond = afterFirst;
            moveSome(evaluator, model, afterSecond, random);
            if (random.chance(0.5)) {
                evaluator.undoTo(inner);
                afterSecond = afterFirst;
            }
            if (random.chance(0.4)) {
                evaluator.undoTo(outer);
            } else {
                evaluator.commit();
                point = afterSecond;
            }
            if (round % 10 != 9) continue;
            ASSERT_NO_FATAL_FAILURE(expectTwin(evaluator, model, point));
        }
    }
}

TEST(Evaluator, ALongSumKeepsItsPrecisionAndRecoversFromOverflow) {
    ModelBuilder b;
    std::vector<ExpressionIndex> x;
    std::vector<double> coefficients;
    for (int k = 0; k < 1000; ++k) {
        x.push_back(b.real(-1e15, 1e15));
        coefficients.push_back(1.0 + 1e-3 * k);
    }
    x.push_back(b.apply(LS_OP_EXP, {x[0]}));
    coefficients.push_back(1.0);
    const ExpressionIndex sum = b.linear<double>(x, coefficients);
    const ClosedModel model = b.close();
    Evaluator evaluator(model);
    Point point(1000, Value::ofDouble(0.0));
    evaluator.reset(point);
    Random random(7);
    const auto set = [&](std::size_t d, double v) {
        point[d] = Value::ofDouble(v);
        evaluator.set(static_cast<DecisionIndex>(d), point[d]);
        evaluator.propagate();
        evaluator.commit();
    };
    for (int n = 0; n < 100000; ++n) set(1 + random.below(999), 2e15 * (random.unit() - 0.5));
    set(0, 1e4);  // exp overflows
    EXPECT_TRUE(std::isnan(evaluator.valueOf(sum).asDouble()));
    for (std::size_t d = 0; d < point.size(); ++d) set(d, d == 1 ? 1.0 : 0.0);
    EXPECT_EQ(evaluator.valueOf(sum).asDouble(), 2.001);
}

TEST(Distance, MeasuresTheWayToATruthValue) {
    const struct {
        const char* what;
        const char* constraint;  ///< over the integers x = 5 and y = 3, in units of 2
        double toTrue, toFalse;
    } cases[] = {
        {"an inequality's gap in its scale", "leq(sum(prod(x,2)), 6)", 2.0, 0.0},
        {"its slack and one more step", "leq(sum(prod(x,2)), 14)", 0.0, 2.5},
        {"a strict one needs one more", "lt(sum(prod(x,2)), 10)", 0.5, 0.0},
        {"an equality from above", "eq(sum(prod(x,2)), 8)", 1.0, 0.0},
        {"from below", "eq(sum(prod(y,2)), 8)", 1.0, 0.0},
        {"a disequality", "neq(x, 5)", 1.0, 0.0},
        {"a conjunction adds", "and(leq(x,3), geq(y,6))", 5.0, 0.0},
        {"a disjunction takes the cheapest", "or(leq(x,3), geq(y,6))", 2.0, 0.0},
        {"all of it must go", "or(leq(x,7), leq(y,6))", 0.0, 7.0},
        {"the cheapest flip", "xor(leq(x,3), geq(y,6), leq(x,8))", 0.0, 2.0},
        {"the other branch costs less", "if(leq(x,4), leq(y,9), leq(x,4))", 1.0, 0.0},
        {"a number is away from 0 by its size", "not(x)", 5.0, 0.0},
    };
    for (const auto& c : cases) {
        const ClosedModel model =
            testing::ModelText(std::string("x: int 0 9; y: int 0 9;") + c.constraint).model;
        Evaluator evaluator(model);
        evaluator.reset({Value::ofInt(5), Value::ofInt(3)});
        const Distance distance =
            evaluator.distanceOf(evaluator.plan().logicOf(model.constraint[0]));
        EXPECT_DOUBLE_EQ(distance.toTrue, c.toTrue) << c.what;
        EXPECT_DOUBLE_EQ(distance.toFalse, c.toFalse) << c.what;
    }
}

}  // namespace
}  // namespace engine
