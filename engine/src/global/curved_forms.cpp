#include "global/curved_forms.hpp"

#include <algorithm>

#include "linear/curvature.hpp"

namespace engine {
namespace {

/// Is it one curve of a linear argument, for which lines do as well?
bool isPlainCurve(const FactorableModel& factorable, const LinearForm& form) {
    if (form.column.size() != 1) return false;
    const auto definitionOf = [&factorable](std::int32_t column) -> const Definition* {
        const std::int32_t k = factorable.origin[static_cast<std::size_t>(column)].definition;
        return k < 0 ? nullptr : &factorable.definition[static_cast<std::size_t>(k)];
    };
    const auto isDecision = [&factorable](std::int32_t column) {
        return factorable.linear.decision[static_cast<std::size_t>(column)] >= 0;
    };
    const Definition* curve = definitionOf(form.column.front());
    if (curve == nullptr || curve->kind != Definition::Kind::Curve) return false;
    if (isDecision(curve->first)) return true;
    const Definition* argument = definitionOf(curve->first);
    return argument != nullptr && argument->kind == Definition::Kind::Sum &&
           std::all_of(argument->forms[0].column.begin(), argument->forms[0].column.end(),
                       isDecision);
}

}  // namespace

std::vector<CurvedForm> curvedFormsOf(const ClosedModel& model, const Propagator& propagator,
                                      const std::vector<Value>& values,
                                      const FactorableModel& factorable,
                                      const std::vector<LinearForm>& form,
                                      const std::vector<std::uint8_t>& isNeeded) {
    std::vector<CurvedForm> curved;
    const auto curvature = curvaturesOf(model, propagator, values);
    for (const ExpressionIndex e : model.order) {
        const auto i = static_cast<std::size_t>(e);
        const Curvature own = curvature[i].curvature;
        if (isNeeded[i] == 0 || (own != Curvature::Convex && own != Curvature::Concave)) continue;
        const ls_operator op = model.operatorOf(e);
        const bool isSum = op == LS_OP_SUM || op == LS_OP_SUB;
        const bool isMultiple = op == LS_OP_PROD && form[i].column.size() > 1;
        if ((isSum && !curvature[i].isWhole) || isMultiple) continue;
        if (!isPlainCurve(factorable, form[i])) {
            curved.push_back({e, form[i], own == Curvature::Convex});
        }
    }
    return curved;
}

}  // namespace engine
