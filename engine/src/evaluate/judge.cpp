#include "evaluate/judge.hpp"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "operators/operator_row.hpp"

namespace engine {
namespace {

/// 1: `a` is better, -1: `b` is, 0: equally good.
int compareObjective(bool maximise, Value a, Value b) {
    return maximise ? compare(a, b) : compare(b, a);
}

}  // namespace

Verdict judge(const ClosedModel& model, const Point& point, std::vector<Value>& values) {
    assert(point.size() == model.decision.size());
    values = model.constantValue;
    for (std::size_t d = 0; d < point.size(); ++d) {
        values[static_cast<std::size_t>(model.decision[d])] = point[d];
    }
    for (const ExpressionIndex e : model.order) {
        const ls_operator op = model.operatorOf(e);
        if (op == LS_OP_CONST || model.decisionOf[static_cast<std::size_t>(e)] >= 0) continue;
        values[static_cast<std::size_t>(e)] = computeValue(model, e, values);
    }
    Verdict verdict;
    verdict.feasible = std::all_of(
        model.constraint.begin(), model.constraint.end(),
        [&values](ExpressionIndex e) { return values[static_cast<std::size_t>(e)].isTrue(); });
    verdict.objectives.reserve(model.objective.size());
    for (const Objective& o : model.objective) {
        verdict.objectives.push_back(values[static_cast<std::size_t>(o.expression)]);
        if (isNan(verdict.objectives.back())) verdict.feasible = false;
    }
    return verdict;
}

bool isBetter(const ClosedModel& model, const Verdict& a, const Verdict& b) {
    if (!a.feasible || !b.feasible) return a.feasible && !b.feasible;
    for (std::size_t k = 0; k < model.objective.size(); ++k) {
        const int order =
            compareObjective(model.objective[k].maximise, a.objectives[k], b.objectives[k]);
        if (order != 0) return order > 0;
    }
    return false;
}

}  // namespace engine
