#include "evaluate/evaluator.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "engine/model_builder.hpp"
#include "search/random.hpp"

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
    const auto i = [](int v) { return Value::ofInt(v); };
    const struct {
        const char* what;
        ls_operator op;
        Value left, right;
        double toTrue, toFalse;
    } cases[] = {
        {"an inequality's gap in its scale", LS_OP_LEQ, i(7), i(3), 2.0, 0.0},
        {"its slack and one more step", LS_OP_LEQ, i(3), i(7), 0.0, 2.5},
        {"a strict one needs one more", LS_OP_LT, i(3), i(3), 0.5, 0.0},
        {"an equality from above", LS_OP_EQ, i(5), i(3), 1.0, 0.0},
        {"from below", LS_OP_EQ, i(3), i(5), 1.0, 0.0},
        {"a disequality", LS_OP_NEQ, i(3), i(3), 0.5, 0.0},
    };
    for (const auto& c : cases) {
        const Distance distance = distanceOfRelation(c.op, c.left, c.right, 2.0);
        EXPECT_DOUBLE_EQ(distance.toTrue, c.toTrue) << c.what;
        EXPECT_DOUBLE_EQ(distance.toFalse, c.toFalse) << c.what;
    }
    const Distance parts[] = {{2.0, 0.0}, {3.0, 0.0}, {0.0, 4.0}};
    EXPECT_EQ(distanceOfConnective(LS_OP_AND, parts).toTrue, 5.0);
    EXPECT_EQ(distanceOfConnective(LS_OP_OR, parts).toFalse, 4.0);
    EXPECT_EQ(distanceOfConnective(LS_OP_XOR, parts).toFalse, 2.0);
    EXPECT_EQ(distanceOfConnective(LS_OP_IF, parts).toFalse, 2.0) << "the other branch costs less";
}

}  // namespace
}  // namespace engine
