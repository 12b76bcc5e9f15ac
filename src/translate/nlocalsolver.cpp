#include "translate/nlocalsolver.hpp"

#include "host/libraries.hpp"

namespace vex {

NorvLocalSolver::~NorvLocalSolver() {
    if (ownsOptions) optFree(&opt);
}

void NorvLocalSolver::callback(localsolver::LocalSolver& /*search*/,
                               localsolver::LSCallbackType type) {
    if (onSearchEvent != nullptr) onSearchEvent(*this, type);
}

void NorvLocalSolver::resetTranslation() {
    definedVariables.clear();
    definingEquations.clear();
    varsInProgress.clear();
    variables.clear();
    constraints.clear();
    objectives.clear();
    nbObjectives = 0;
    definitions.clear();
    intConstants.clear();
    doubleConstants.clear();
}

}  // namespace vex
