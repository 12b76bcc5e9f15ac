#include "search/restrictions.hpp"

#include <algorithm>
#include <cmath>

#include "evaluate/distance.hpp"
#include "evaluate/operators.hpp"

namespace engine {
namespace {

struct Wanted {
    ExpressionIndex expression;
    bool truth;
};

/// One pass over the constraints.
class Collection {
public:
    explicit Collection(const Evaluator& evaluator)
        : evaluator_(evaluator), plan_(evaluator.plan()), model_(plan_.model()) {}

    std::vector<Restriction> run() {
        for (const ExpressionIndex e : plan_.constraints()) {
            open_.push_back({e, true});
            while (!open_.empty()) {
                const Wanted wanted = open_.back();
                open_.pop_back();
                if (!plan_.isFixed(wanted.expression)) expand(wanted);
            }
        }
        return std::move(restrictions_);
    }

private:
    void expand(const Wanted& wanted);
    void add(const Wanted& wanted);

    const Evaluator& evaluator_;
    const Plan& plan_;
    const ClosedModel& model_;
    std::vector<Wanted> open_;
    std::vector<Restriction> restrictions_;
};

void Collection::expand(const Wanted& wanted) {
    const ls_operator op = model_.operatorOf(wanted.expression);
    const auto operands = model_.operandsOf(wanted.expression);
    if (isRelation(op)) {
        add(wanted);
    } else if (op == LS_OP_NOT) {
        open_.push_back({operands[0], !wanted.truth});
    } else if ((op == LS_OP_AND && wanted.truth) || (op == LS_OP_OR && !wanted.truth)) {
        for (const ExpressionIndex x : operands) open_.push_back({x, wanted.truth});
    } else if ((op == LS_OP_AND || op == LS_OP_OR) && !operands.empty()) {
        const auto cost = [&](ExpressionIndex x) {
            const double margin = evaluator_.distanceOf(plan_.logicOf(x)).margin();
            return wanted.truth ? margin : -margin;
        };
        open_.push_back({*std::min_element(operands.begin(), operands.end(),
                                           [&](auto a, auto b) { return cost(a) < cost(b); }),
                         wanted.truth});
    }
}

/// @param room  how far beyond the border a strict relation has to be, in tolerances.
Restriction restrictionOf(const Plan& plan, const Wanted& wanted, Value left, Value right,
                          double room) {
    const auto sides = plan.model().operandsOf(wanted.expression);
    const ls_operator asked = plan.model().operatorOf(wanted.expression);
    const ls_operator op = wanted.truth ? asked : negated(asked);
    double sign = op == LS_OP_GEQ || op == LS_OP_GT ? -1.0 : 1.0;
    if (op == LS_OP_NEQ) sign = compare(left, right) > 0 ? -1.0 : 1.0;
    const bool isStrict = op == LS_OP_LT || op == LS_OP_GT || op == LS_OP_NEQ;
    const double shift = isStrict ? room * toleranceBetween(left, right) : 0.0;
    const double scale = plan.scaleOfRelation(wanted.expression);
    return {sides[0], sides[1], sign, scale, shift, op == LS_OP_EQ};
}

void Collection::add(const Wanted& wanted) {
    const auto sides = model_.operandsOf(wanted.expression);
    restrictions_.push_back(restrictionOf(plan_, wanted, evaluator_.valueOf(sides[0]),
                                          evaluator_.valueOf(sides[1]), /*room=*/2.0));
}

/// The numbers that an operator rounds to the same whole number.
std::optional<Interval> cellOf(ls_operator op, double whole) {
    const auto above = [](double d) { return std::nextafter(d, HUGE_VAL); };
    const auto below = [](double d) { return std::nextafter(d, -HUGE_VAL); };
    switch (op) {
        case LS_OP_AT:
        case LS_OP_FLOOR:
            return Interval{whole, below(whole + 1.0)};
        case LS_OP_CEIL:
            return Interval{above(whole - 1.0), whole};
        case LS_OP_ROUND:
            return Interval{whole > 0.0 ? whole - 0.5 : above(whole - 0.5),
                            whole < 0.0 ? whole + 0.5 : below(whole + 0.5)};
        default:
            return std::nullopt;
    }
}

}  // namespace

std::vector<Restriction> restrictionsAt(const Evaluator& evaluator) {
    return Collection(evaluator).run();
}

std::vector<Restriction> guardsAt(const Plan& plan, std::span<const Value> values) {
    const ClosedModel& model = plan.model();
    const auto valueOf = [values](ExpressionIndex e) {
        return values[static_cast<std::size_t>(e)];
    };
    std::vector<Restriction> guards;
    for (const ExpressionIndex e : model.order) {
        if (plan.isFixed(e) || model.usersOf(e).empty()) continue;
        const auto operands = model.operandsOf(e);
        const ls_operator op = model.operatorOf(e);
        if (isRelation(op)) {
            const Value left = valueOf(operands[0]);
            const Value right = valueOf(operands[1]);
            if (std::isnan(valueOf(e).asDouble()) || (left.isInt() && right.isInt())) continue;
            guards.push_back(
                restrictionOf(plan, {e, valueOf(e).isTrue()}, left, right, /*room=*/1.0));
            continue;
        }
        const ExpressionIndex rounded = operands.empty() ? e : operands.back();
        const double whole =
            op == LS_OP_AT ? std::trunc(valueOf(rounded).asDouble()) : valueOf(e).asDouble();
        const std::optional<Interval> cell = cellOf(op, whole);
        if (!cell || valueOf(rounded).isInt()) continue;
        for (const double sign : {1.0, -1.0}) {
            const double border = sign > 0.0 ? cell->upper : cell->lower;
            guards.push_back({rounded, Restriction::nothing, sign, /*scale=*/1.0, -sign * border,
                              /*isEquation=*/false});
        }
    }
    return guards;
}

std::vector<ExpressionIndex> sidesOf(std::span<const Restriction> restrictions) {
    std::vector<ExpressionIndex> sides;
    for (const Restriction& r : restrictions) {
        sides.push_back(r.left);
        if (r.right != Restriction::nothing) sides.push_back(r.right);
    }
    return sides;
}

}  // namespace engine
