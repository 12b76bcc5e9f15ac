#include "translate/nlocalsolver.hpp"

#include <stdexcept>

#include "host/libraries.hpp"

namespace vex {

NorvLocalSolver::~NorvLocalSolver() {
    solver.reset();
    if (ownsOptions) optFree(&opt);
}

void NorvLocalSolver::callback(localsolver::LocalSolver& /*search*/,
                               localsolver::LSCallbackType type) {
    if (onSearchEvent == nullptr)
        throw std::logic_error("NorvLocalSolver::callback: nobody handles the search's events.");
    onSearchEvent(*this, type);
}

void NorvLocalSolver::resetTranslation() {
    definedVariables.clear();
    definingEquations.clear();
    varsInProgress.clear();
    variables.clear();
    constraints.clear();
    objectives.clear();
    nbObjectives = 0;
    definingExpressions_.clear();
    intConstants.clear();
    doubleConstants.clear();
}

}  // namespace vex
