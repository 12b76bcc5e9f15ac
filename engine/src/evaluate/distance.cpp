#include "evaluate/distance.hpp"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "evaluate/operators.hpp"

namespace engine {
namespace {

/// The least distance from a truth value that is to change.
constexpr double smallest = 1e-9;

double bounded(double distance) {
    return std::isnan(distance) ? farAway : std::clamp(distance, smallest, farAway);
}

Distance conjunction(std::span<const Distance> operands) {
    Distance result{0.0, farAway};
    for (const Distance& d : operands) {
        result.toTrue += d.toTrue;
        result.toFalse = std::min(result.toFalse, d.toFalse);
    }
    result.toTrue = std::min(result.toTrue, farAway);
    return result;
}

Distance flipped(Distance d) {
    return {d.toFalse, d.toTrue};
}

Distance disjunction(std::span<const Distance> operands) {
    Distance result{farAway, 0.0};
    for (const Distance& d : operands) {
        result.toTrue = std::min(result.toTrue, d.toTrue);
        result.toFalse += d.toFalse;
    }
    result.toFalse = std::min(result.toFalse, farAway);
    return result;
}

Distance exclusive(std::span<const Distance> operands) {
    bool odd = false;
    double cheapestFlip = farAway;
    for (const Distance& d : operands) {
        if (d.toTrue > 0.0 && d.toFalse > 0.0) return {farAway, farAway};
        if (d.toTrue <= 0.0) odd = !odd;
        cheapestFlip = std::min(cheapestFlip, std::max(d.toTrue, d.toFalse));
    }
    return odd ? Distance{0.0, cheapestFlip} : Distance{cheapestFlip, 0.0};
}

Distance choice(const Distance& condition, const Distance& yes, const Distance& no) {
    const auto cheaper = [&condition](double throughYes, double throughNo) {
        const double cost = std::min(condition.toTrue + throughYes, condition.toFalse + throughNo);
        return std::min(cost, farAway);
    };
    return {cheaper(yes.toTrue, no.toTrue), cheaper(yes.toFalse, no.toFalse)};
}

/// Distance to make `relation` hold, given that it does not.
double repair(ls_operator relation, Value left, Value right) {
    const double gap = left.asDouble() - right.asDouble();
    const bool exact = left.isInt() && right.isInt();
    // Just outside the tolerance is where a strict relation starts to hold.
    const double strict = exact ? 1.0 : 2.0 * toleranceBetween(left, right);
    switch (relation) {
        case LS_OP_EQ:
            return std::fabs(gap);
        case LS_OP_NEQ:
            return strict;
        case LS_OP_LEQ:
            return gap;
        case LS_OP_GEQ:
            return -gap;
        case LS_OP_LT:
            return gap + strict;
        default:
            assert(relation == LS_OP_GT);
            return strict - gap;
    }
}

}  // namespace

bool isRelation(ls_operator op) {
    return op >= LS_OP_EQ && op <= LS_OP_LT;
}
bool isConnective(ls_operator op) {
    return op >= LS_OP_IF && op <= LS_OP_XOR;
}

ls_operator negated(ls_operator relation) {
    switch (relation) {
        case LS_OP_EQ:
            return LS_OP_NEQ;
        case LS_OP_NEQ:
            return LS_OP_EQ;
        case LS_OP_GEQ:
            return LS_OP_LT;
        case LS_OP_LT:
            return LS_OP_GEQ;
        case LS_OP_LEQ:
            return LS_OP_GT;
        default:
            assert(relation == LS_OP_GT);
            return LS_OP_LEQ;
    }
}

Distance distanceOfRelation(ls_operator relation, Value left, Value right, double scale) {
    const Value holds = relate(relation, left, right);
    if (!holds.isInt()) return {farAway, farAway};
    if (holds.isTrue()) return {0.0, bounded(repair(negated(relation), left, right) / scale)};
    return {bounded(repair(relation, left, right) / scale), 0.0};
}

Distance distanceOfNumber(Value v) {
    const double number = v.asDouble();
    if (std::isnan(number)) return {farAway, farAway};
    return v.isTrue() ? Distance{0.0, bounded(std::fabs(number))} : Distance{1.0, 0.0};
}

Distance distanceOfConnective(ls_operator op, std::span<const Distance> operands) {
    switch (op) {
        case LS_OP_NOT:
            return flipped(operands[0]);
        case LS_OP_AND:
            return conjunction(operands);
        case LS_OP_OR:
            return disjunction(operands);
        case LS_OP_XOR:
            return exclusive(operands);
        default:
            assert(op == LS_OP_IF);
            return choice(operands[0], operands[1], operands[2]);
    }
}

}  // namespace engine
