#include "evaluate/evaluator.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "engine/random_models.hpp"
#include "operators/random.hpp"

namespace engine {
namespace {

/// Expressions over all operators, each of which can be used by later ones; some are constraints.
ClosedModel randomModel(std::uint32_t seed) {
    testing::RandomModels random(seed);
    std::string text = random.decisions(/*withReals=*/true) + "h = 4611686018427387903;";
    for (int k = 0; k < 30; ++k) {
        text += random.definition(2);
        if (random.below(3) == 0) text += random.expression(1) + ";";
        // The shape that sums absorb.
        text += random.name() + " + -2*" + random.name() + " <= h*" + random.name() + ";";
    }
    return testing::ModelText(text + "minimise " + random.expression(1) + ";").model;
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
        const ClosedModel model = randomModel(static_cast<std::uint32_t>(seed));
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
    std::string decisions;
    std::string terms = "s = exp(x0)";
    for (int k = 0; k < 1000; ++k) {
        const std::string name = "x" + std::to_string(k);
        decisions += name + ": real -1e15 1e15;";
        terms.append(" + ").append(name).append("*").append(std::to_string(1.0 + 1e-3 * k));
    }
    const testing::ModelText text(decisions + terms + ";");
    const ClosedModel& model = text.model;
    const ExpressionIndex sum = text.named("s");
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

}  // namespace
}  // namespace engine
