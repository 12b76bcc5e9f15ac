#include <algorithm>
#include <cmath>
#include <numbers>

#include "search/inverse.hpp"

namespace engine {
namespace {

int turned(int direction, double factor) {
    return factor < 0.0 ? -direction : direction;
}

}  // namespace

bool InverseWalk::hasRoom(ExpressionIndex e, double wanted) const {
    const DecisionIndex d = model_.decisionOf[static_cast<std::size_t>(e)];
    if (d < 0) return true;
    const Interval& domain = domain_[static_cast<std::size_t>(d)];
    const double current = number(e);
    return wanted > current ? current < domain.upper : current > domain.lower;
}

Goal InverseWalk::rootGoal(double current, double m, const Goal& goal) const {
    const bool isOdd = std::fmod(m, 2.0) != 0.0;
    if (isOdd) {
        const double root = std::copysign(std::pow(std::fabs(goal.number), 1.0 / m), goal.number);
        return Goal::ofNumber(root, goal.direction);
    }
    const bool negative = current < 0.0 || (current == 0.0 && random_.chance(0.5));
    const double size = std::fmax(goal.number, 0.0);
    // Squares are common, and a square root has the same digits everywhere.
    const double root = m == 2.0 ? std::sqrt(size) : std::pow(size, 1.0 / m);
    return Goal::ofNumber(negative ? -root : root, negative ? -goal.direction : goal.direction);
}

InverseWalk::MaybeStep InverseWalk::throughSum(ExpressionIndex e, const Goal& goal) {
    constexpr int nbDraws = 12;
    const std::size_t nbTerms = model_.operandsOf(e).size();
    const double missing = goal.number - number(e);
    if (!std::isfinite(missing)) {
        const auto x = anyOperand(model_.operandsOf(e),
                                  [this](ExpressionIndex k) { return !std::isfinite(number(k)); });
        if (!x) return std::nullopt;
        return Step{*x, Goal::ofNumber(0.0, 0)};
    }
    for (int n = 0; n < nbDraws; ++n) {
        const Plan::Term term = evaluator_.plan().termOf(e, random_.below(nbTerms));
        const double factor = term.factor.asDouble();
        if (isFixed(term.expression) || factor == 0.0) continue;
        const double wanted = number(term.expression) + missing / factor;
        if (!hasRoom(term.expression, wanted)) continue;
        return Step{term.expression, Goal::ofNumber(wanted, turned(goal.direction, factor))};
    }
    return std::nullopt;
}

InverseWalk::MaybeStep InverseWalk::throughDifference(ExpressionIndex e, const Goal& goal) {
    const auto x = model_.operandsOf(e);
    const bool moveFirst = isFixed(x[1]) || (!isFixed(x[0]) && random_.chance(0.5));
    if (moveFirst) return Step{x[0], Goal::ofNumber(goal.number + number(x[1]), goal.direction)};
    return Step{x[1], Goal::ofNumber(number(x[0]) - goal.number, -goal.direction)};
}

InverseWalk::MaybeStep InverseWalk::throughProduct(ExpressionIndex e, const Goal& goal) {
    const auto operands = model_.operandsOf(e);
    const auto chosen = anyOperand(operands, [](ExpressionIndex) { return true; });
    if (!chosen) return std::nullopt;
    double others = 1.0;
    double multiplicity = 0.0;
    for (const ExpressionIndex x : operands) {
        x == * chosen ? multiplicity += 1.0 : others *= number(x);
    }
    if (others == 0.0) {
        // Nothing helps but another operand: the one that is 0 must leave it.
        const auto zero =
            anyOperand(operands, [this](ExpressionIndex x) { return number(x) == 0.0; });
        if (!zero || goal.number == 0.0) return std::nullopt;
        const bool isBoolean = model_.operatorOf(*zero) == LS_OP_BOOL;
        return Step{*zero, Goal::ofNumber(isBoolean ? 1.0 : goal.number, 0)};
    }
    const Goal quotient = Goal::ofNumber(goal.number / others, turned(goal.direction, others));
    if (std::isnan(quotient.number)) return std::nullopt;
    if (multiplicity < 1.5) return Step{*chosen, quotient};
    return Step{*chosen, rootGoal(number(*chosen), multiplicity, quotient)};
}

InverseWalk::MaybeStep InverseWalk::throughExtreme(ExpressionIndex e, const Goal& goal, int sign) {
    // Written for max (sign 1); min is max of the negated.
    const double wanted = goal.number;
    const bool down = sign * number(e) > sign * wanted;
    const auto x = anyOperand(model_.operandsOf(e), [&](ExpressionIndex k) {
        return !down || sign * number(k) > sign * wanted;
    });
    if (!x) return std::nullopt;
    return Step{*x, Goal::ofNumber(wanted, down ? -sign : goal.direction)};
}

InverseWalk::MaybeStep InverseWalk::throughDistance(ExpressionIndex e, double t) {
    const auto x = model_.operandsOf(e);
    double difference = number(x[0]) - number(x[1]);
    if (difference == 0.0 || random_.chance(0.1)) difference = random_.chance(0.5) ? 1.0 : -1.0;
    const double wanted = std::copysign(std::fmax(t, 0.0), difference);
    const bool moveFirst = isFixed(x[1]) || (!isFixed(x[0]) && random_.chance(0.5));
    if (moveFirst) return Step{x[0], Goal::ofNumber(number(x[1]) + wanted, 0)};
    return Step{x[1], Goal::ofNumber(number(x[0]) - wanted, 0)};
}

InverseWalk::MaybeStep InverseWalk::throughQuotient(ExpressionIndex e, double t) {
    const auto x = model_.operandsOf(e);
    const bool moveFirst = isFixed(x[1]) || (!isFixed(x[0]) && random_.chance(0.5));
    if (moveFirst) return Step{x[0], Goal::ofNumber(t * number(x[1]), 0)};
    if (t == 0.0) return std::nullopt;
    return Step{x[1], Goal::ofNumber(number(x[0]) / t, 0)};
}

InverseWalk::MaybeStep InverseWalk::throughElement(ExpressionIndex e, const Goal& goal) {
    const ExpressionIndex selector = model_.operandsOf(e)[1];
    const auto array = model_.operandsOf(model_.operandsOf(e)[0]);
    const auto current = static_cast<std::size_t>(number(selector));
    const bool canSelect = !isFixed(selector) && array.size() > 1;
    if (!isFixed(array[current]) && !(canSelect && random_.chance(0.5))) {
        return Step{array[current], goal};
    }
    if (!canSelect) return std::nullopt;
    constexpr int nbDraws = 8;
    std::size_t best = current;
    for (int n = 0; n < nbDraws; ++n) {
        const std::size_t k = random_.below(array.size());
        const auto missing = [&](std::size_t i) {
            return std::fabs(number(array[i]) - goal.number);
        };
        if (k != current && (best == current || missing(k) < missing(best))) best = k;
    }
    if (best == current) return std::nullopt;
    return Step{selector, Goal::ofNumber(static_cast<double>(best), 0)};
}

InverseWalk::MaybeStep InverseWalk::throughScalarProduct(ExpressionIndex e, double t) {
    const auto arrays = model_.operandsOf(e);
    const auto a = model_.operandsOf(arrays[0]);
    const auto b = model_.operandsOf(arrays[1]);
    if (a.empty()) return std::nullopt;
    const std::size_t k = random_.below(a.size());
    const bool moveFirst = isFixed(b[k]) || (!isFixed(a[k]) && random_.chance(0.5));
    const ExpressionIndex moved = moveFirst ? a[k] : b[k];
    const double factor = number(moveFirst ? b[k] : a[k]);
    if (isFixed(moved) || factor == 0.0) return std::nullopt;
    return Step{moved, Goal::ofNumber(number(moved) + (t - number(e)) / factor, 0)};
}

InverseWalk::MaybeStep InverseWalk::throughPower(ExpressionIndex e, const Goal& goal) {
    const auto x = model_.operandsOf(e);
    const double base = number(x[0]);
    const double exponent = number(x[1]);
    if (isFixed(x[0]) || (!isFixed(x[1]) && random_.chance(0.3))) {
        if (base <= 0.0 || base == 1.0 || goal.number <= 0.0) return std::nullopt;
        return Step{x[1], Goal::ofNumber(std::log(goal.number) / std::log(base), 0)};
    }
    if (exponent == 0.0) return std::nullopt;
    if (exponent == std::trunc(exponent) && exponent > 0.0) {
        return Step{x[0], rootGoal(base, exponent, goal)};
    }
    const double root = std::pow(std::fmax(goal.number, 0.0), 1.0 / exponent);
    const double sign = exponent == std::trunc(exponent) ? std::copysign(1.0, base) : 1.0;
    return Step{x[0], Goal::ofNumber(sign * root, 0)};
}

InverseWalk::MaybeStep InverseWalk::throughFunction(ExpressionIndex e, const Goal& goal) {
    constexpr double pi = std::numbers::pi;
    const ExpressionIndex x = model_.operandsOf(e)[0];
    const double current = number(x);
    const double t = goal.number;
    // The solution of a periodic equation that is nearest to the current argument.
    const auto nearest = [current](double solution, double period) {
        return solution + period * std::round((current - solution) / period);
    };
    const double cut = std::clamp(t, -1.0, 1.0);
    const bool mirrored = random_.chance(0.5);
    switch (model_.operatorOf(e)) {
        case LS_OP_ABS: {
            const bool negative = (current < 0.0) != random_.chance(0.1);
            const double size = std::fmax(t, 0.0);
            return Step{x, Goal::ofNumber(negative ? -size : size,
                                          negative ? -goal.direction : goal.direction)};
        }
        case LS_OP_MOD:
            return Step{x, Goal::ofNumber(current + t - number(e), goal.direction)};
        case LS_OP_SQRT:
            return Step{x, Goal::ofNumber(t > 0.0 ? t * t : 0.0, goal.direction)};
        case LS_OP_LOG:
            return Step{x, Goal::ofNumber(std::exp(t), goal.direction)};
        case LS_OP_EXP:
            return Step{x, Goal::ofNumber(t > 0.0 ? std::log(t) : current - 1.0, goal.direction)};
        case LS_OP_COS:
            return Step{x, Goal::ofNumber(
                               nearest(mirrored ? -std::acos(cut) : std::acos(cut), 2.0 * pi), 0)};
        case LS_OP_SIN:
            return Step{x,
                        Goal::ofNumber(
                            nearest(mirrored ? pi - std::asin(cut) : std::asin(cut), 2.0 * pi), 0)};
        case LS_OP_TAN:
            return Step{x, Goal::ofNumber(nearest(std::atan(t), pi), 0)};
        default:
            // ceil, floor and round: the argument itself.
            return Step{x, goal};
    }
}

}  // namespace engine
