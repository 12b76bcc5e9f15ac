#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "evaluate/distance.hpp"
#include "evaluate/operators.hpp"
#include "search/inverse.hpp"

namespace engine {
namespace {

/// Does a number goal for an expression with values 0 and 1 ask for the 1?
bool isOneWanted(const Goal& goal) {
    if (goal.direction > 0) return goal.number > 0.0;
    return goal.number >= (goal.direction < 0 ? 1.0 : 0.5);
}

std::int64_t saturated(double d) {
    constexpr double bound = 9223372036854775808.0;  // 2^63
    if (d >= bound) return std::numeric_limits<std::int64_t>::max();
    if (d < -bound) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(d);
}

}  // namespace

std::optional<DecisionMove> InverseWalk::propose(ExpressionIndex e, Goal goal) {
    while (true) {
        const DecisionIndex d = model_.decisionOf[static_cast<std::size_t>(e)];
        if (d >= 0) {
            const double wanted = goal.isTruth ? (goal.truth ? 1.0 : 0.0) : goal.number;
            if (std::isnan(wanted)) return std::nullopt;
            const Value value = valueInDomain(d, wanted, goal.direction);
            if (compare(value, evaluator_.decisionValue(d)) == 0) return std::nullopt;
            return DecisionMove{d, value};
        }
        const MaybeStep step = stepFrom(e, goal);
        if (!step) return std::nullopt;
        e = step->operand;
        goal = step->goal;
    }
}

Value InverseWalk::valueInDomain(DecisionIndex d, double number, int direction) const {
    const Interval& domain = domain_[static_cast<std::size_t>(d)];
    if (!model_.isDiscrete(d)) {
        return Value::ofDouble(std::clamp(number, domain.lower, domain.upper));
    }
    const double current = evaluator_.decisionValue(d).asDouble();
    // Rounding of the goal must not push an exact integer to its neighbour.
    constexpr double slip = 1e-9;
    double rounded = std::round(number);
    if (direction > 0) rounded = std::ceil(number - slip);
    if (direction < 0) rounded = std::floor(number + slip);
    if (rounded == current && std::fabs(number - current) > slip) {
        rounded += number > current ? 1.0 : -1.0;
    }
    return Value::ofInt(saturated(std::clamp(rounded, domain.lower, domain.upper)));
}

InverseWalk::MaybeStep InverseWalk::stepFrom(ExpressionIndex e, const Goal& goal) {
    const ls_operator op = model_.operatorOf(e);
    if (isFixed(e)) return std::nullopt;
    if (op == LS_OP_IF) return throughIf(e, goal);
    if (isRelation(op) || isConnective(op)) {
        const bool truth = goal.isTruth ? goal.truth : isOneWanted(goal);
        return isRelation(op) ? throughRelation(e, truth) : throughConnective(e, truth);
    }
    if (std::isnan(number(e))) return stepOutOfNan(e);
    const Goal wanted = !goal.isTruth ? goal
                        : goal.truth  ? Goal::ofNumber(random_.chance(0.5) ? 1.0 : -1.0, 0)
                                      : Goal::ofNumber(0.0, 0);
    switch (op) {
        case LS_OP_SUM:
            return throughSum(e, wanted);
        case LS_OP_SUB:
            return throughDifference(e, wanted);
        case LS_OP_PROD:
            return throughProduct(e, wanted);
        case LS_OP_MAX:
            return throughExtreme(e, wanted, 1);
        case LS_OP_MIN:
            return throughExtreme(e, wanted, -1);
        case LS_OP_DIST:
            return throughDistance(e, wanted.number);
        case LS_OP_DIV:
            return throughQuotient(e, wanted.number);
        case LS_OP_AT:
            return throughElement(e, wanted);
        case LS_OP_SCALARPROD:
            return throughScalarProduct(e, wanted.number);
        case LS_OP_POW:
            return throughPower(e, wanted);
        default:
            return throughFunction(e, wanted);
    }
}

InverseWalk::MaybeStep InverseWalk::stepOutOfNan(ExpressionIndex e) {
    const auto operands = model_.operandsOf(e);
    const auto isNan = [this](ExpressionIndex x) { return std::isnan(number(x)); };
    if (const auto x = anyOperand(operands, isNan)) return Step{*x, Goal::ofNumber(1.0, 0)};
    // The domain error is made here: 1 is inside the domain of every function.
    const auto any = [](ExpressionIndex) { return true; };
    const auto x = anyOperand(operands, any);
    if (!x) return std::nullopt;
    return Step{*x, Goal::ofNumber(model_.operatorOf(e) == LS_OP_AT ? 0.0 : 1.0, 0)};
}

InverseWalk::MaybeStep InverseWalk::throughRelation(ExpressionIndex e, bool truth) {
    const auto sides = model_.operandsOf(e);
    const ls_operator op = truth ? model_.operatorOf(e) : negated(model_.operatorOf(e));
    const Value left = evaluator_.valueOf(sides[0]);
    const Value right = evaluator_.valueOf(sides[1]);
    if (relate(op, left, right).isTrue()) return std::nullopt;
    const bool moveLeft = isFixed(sides[1]) || (!isFixed(sides[0]) && random_.chance(0.5));

    int direction = 0;
    if (op == LS_OP_LEQ || op == LS_OP_LT) direction = -1;
    if (op == LS_OP_GEQ || op == LS_OP_GT) direction = 1;
    if (op == LS_OP_NEQ) direction = random_.chance(0.5) ? 1 : -1;
    if (!moveLeft) direction = -direction;
    double wanted = moveLeft ? right.asDouble() : left.asDouble();
    if (op == LS_OP_LT || op == LS_OP_GT || op == LS_OP_NEQ) {
        const bool exact = left.isInt() && right.isInt();
        wanted += direction * (exact ? 1.0 : 2.0 * toleranceBetween(left, right));
    }
    return Step{sides[moveLeft ? 0 : 1], Goal::ofNumber(wanted, direction)};
}

InverseWalk::MaybeStep InverseWalk::throughConnective(ExpressionIndex e, bool truth) {
    const auto operands = model_.operandsOf(e);
    const ls_operator op = model_.operatorOf(e);
    if (evaluator_.valueOf(e).isTrue() == truth) return std::nullopt;
    if (op == LS_OP_NOT) return Step{operands[0], Goal::ofTruth(!truth)};
    if (op == LS_OP_XOR) {
        const auto x = anyOperand(operands, [](ExpressionIndex) { return true; });
        if (!x) return std::nullopt;
        return Step{*x, Goal::ofTruth(!evaluator_.valueOf(*x).isTrue())};
    }
    const auto x = anyOperand(operands, [this, truth](ExpressionIndex k) {
        return evaluator_.valueOf(k).isTrue() != truth;
    });
    if (!x) return std::nullopt;
    return Step{*x, Goal::ofTruth(truth)};
}

InverseWalk::MaybeStep InverseWalk::throughIf(ExpressionIndex e, const Goal& goal) {
    const auto operands = model_.operandsOf(e);
    const bool condition = evaluator_.valueOf(operands[0]).isTrue();
    const ExpressionIndex branch = operands[condition ? 1 : 2];
    const bool canSwitch = !isFixed(operands[0]);
    if (!isFixed(branch) && !(canSwitch && random_.chance(0.3))) return Step{branch, goal};
    if (!canSwitch) return std::nullopt;
    return Step{operands[0], Goal::ofTruth(!condition)};
}

}  // namespace engine
