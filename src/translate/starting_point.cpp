#include <cstdint>

#include "host/operations.hpp"
#include "translate/nlocalsolver.hpp"
#include "translate/saturate.hpp"
#include "translate/translation_error.hpp"

namespace vex {

void NorvLocalSolver::setupStartingPoint() {
    const std::int32_t nbVariables = nmoN(nmo);
    for (std::int32_t j = 0; j < nbVariables; ++j) {
        const LSExpression decision = variables[static_cast<std::size_t>(j)];
        // Definitions follow from the decisions; a variable that occurs nowhere has no expression.
        if (!isBuilt(decision) || !decision.isDecision()) continue;
        switch (nmoGetVarTypeOne(nmo, j)) {
            case variable_type::binary:
            case variable_type::integer:
            case variable_type::semiInteger:
                decision.setIntValue(saturate<std::int64_t>(nmoGetVarLOne(nmo, j)));
                break;
            case variable_type::continuous:
            case variable_type::specialOrdered1:
            case variable_type::specialOrdered2:
            case variable_type::semiContinuous:
                decision.setDoubleValue(nmoGetVarLOne(nmo, j));
                break;
            default:
                throw translationError(__LINE__, "NorvLocalSolver::setupStartingPoint",
                                       "Unexpected variable type.");
        }
    }
}

}  // namespace vex
