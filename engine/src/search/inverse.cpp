#include "search/inverse.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "operators/operator_row.hpp"

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

/// A number that is true or false.
Goal numberFor(bool truth, Random& random) {
    if (!truth) return Goal::ofNumber(0.0, 0);
    return Goal::ofNumber(random.chance(0.5) ? 1.0 : -1.0, 0);
}

/// @param safe  inside the domain of every operand.
MaybeStep stepOutOfNan(const InverseOperands& x, double safe) {
    const auto undefined =
        x.anyOperand([&](ExpressionIndex e) { return std::isnan(x.numberOf(e)); });
    if (undefined) return InverseStep{*undefined, Goal::ofNumber(1.0, 0)};
    // The domain error is made here.
    const auto any = x.anyOperand();
    if (!any) return std::nullopt;
    return InverseStep{*any, Goal::ofNumber(safe, 0)};
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
    const Interval domain = surroundings_.domain[static_cast<std::size_t>(d)];
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

MaybeStep InverseWalk::stepFrom(ExpressionIndex e, const Goal& goal) {
    const OperatorRow& row = rowOf(model_.operatorOf(e));
    const InverseOperands x(model_, e, surroundings_);
    if (x.isFixed(e)) return std::nullopt;
    if (row.logic == LogicForm::Choice) return row.inverse(x, goal);
    if (row.logic != LogicForm::Number) {
        return row.inverse(x, goal.isTruth ? goal : Goal::ofTruth(isOneWanted(goal)));
    }
    if (std::isnan(x.ownNumber())) return stepOutOfNan(x, row.safeOperand);
    return row.inverse(x, goal.isTruth ? numberFor(goal.truth, x.random()) : goal);
}

}  // namespace engine
