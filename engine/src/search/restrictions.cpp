#include "search/restrictions.hpp"

#include <algorithm>
#include <cmath>

#include "operators/operator_row.hpp"

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
    const auto operands = model_.operandsOf(wanted.expression);
    const LogicForm form = rowOf(model_.operatorOf(wanted.expression)).logic;
    if (form == LogicForm::Relation) return add(wanted);
    if (form == LogicForm::Not) return open_.push_back({operands[0], !wanted.truth});
    if (form != LogicForm::All && form != LogicForm::Any) return;
    if (wanted.truth == (form == LogicForm::All)) {
        for (const ExpressionIndex x : operands) open_.push_back({x, wanted.truth});
    } else if (!operands.empty()) {
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
    const Relation asked = relationOf(plan.model().operatorOf(wanted.expression));
    const Relation relation = wanted.truth ? asked : negated(asked);
    double sign = relation.direction > 0 ? -1.0 : 1.0;
    if (relation.direction == 0 && relation.isStrict) sign = compare(left, right) > 0 ? -1.0 : 1.0;
    const double shift = relation.isStrict ? room * toleranceBetween(left, right) : 0.0;
    const double scale = plan.scaleOfRelation(wanted.expression);
    return {sides[0], sides[1], sign, scale, shift, relation.isEquation()};
}

void Collection::add(const Wanted& wanted) {
    const auto sides = model_.operandsOf(wanted.expression);
    restrictions_.push_back(restrictionOf(plan_, wanted, evaluator_.valueOf(sides[0]),
                                          evaluator_.valueOf(sides[1]), /*room=*/2.0));
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
        const auto cellOf = rowOf(op).cell;
        if (cellOf == nullptr) continue;
        const ExpressionIndex rounded = operands.back();
        if (valueOf(rounded).isInt()) continue;
        const Interval cell = cellOf(valueOf(rounded).asDouble());
        for (const double sign : {1.0, -1.0}) {
            const double border = sign > 0.0 ? cell.upper : cell.lower;
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
