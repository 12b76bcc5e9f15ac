#include "search/restrictions.hpp"

#include <algorithm>

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

void Collection::add(const Wanted& wanted) {
    const auto sides = model_.operandsOf(wanted.expression);
    const ls_operator asked = model_.operatorOf(wanted.expression);
    const ls_operator op = wanted.truth ? asked : negated(asked);
    const Value left = evaluator_.valueOf(sides[0]);
    const Value right = evaluator_.valueOf(sides[1]);
    double sign = op == LS_OP_GEQ || op == LS_OP_GT ? -1.0 : 1.0;
    if (op == LS_OP_NEQ) sign = compare(left, right) > 0 ? -1.0 : 1.0;
    const bool isStrict = op == LS_OP_LT || op == LS_OP_GT || op == LS_OP_NEQ;
    const double scale = plan_.scaleOf(plan_.logicOf(wanted.expression));
    const double shift = isStrict ? 2.0 * toleranceBetween(left, right) : 0.0;
    restrictions_.push_back({sides[0], sides[1], sign, scale, shift, op == LS_OP_EQ});
}

}  // namespace

std::vector<Restriction> restrictionsAt(const Evaluator& evaluator) {
    return Collection(evaluator).run();
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
