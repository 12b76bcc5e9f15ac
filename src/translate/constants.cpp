#include "translate/nlocalsolver.hpp"
#include "translate/saturate.hpp"
#include "translate/translation_error.hpp"

/// Constants whose value later folding learns from their expression index.

namespace vex {

using localsolver::LSExpression;

LSExpression NorvLocalSolver::makeConstant(double value) {
    if (isIntegral(value)) return makeIntConstant(static_cast<std::int64_t>(value));
    const LSExpression constant = solver->getModel().createConstant(value);
    doubleConstants.set(constant.getIndex(), value);
    return constant;
}

LSExpression NorvLocalSolver::makeIntConstant(std::int64_t value) {
    const LSExpression constant = solver->getModel().createConstant(value);
    intConstants.set(constant.getIndex(), value);
    return constant;
}

double NorvLocalSolver::getConstantValue(LSExpression e) const {
    if (const double* value = doubleConstants.find(e.getIndex())) return *value;
    if (const std::int64_t* value = intConstants.find(e.getIndex()))
        return static_cast<double>(*value);
    // An invented value would silently change the model.
    throw translationError(__LINE__, "NorvLocalSolver::getConstantValue",
                           "Internal error: constant expression " + std::to_string(e.getIndex()) +
                               " has no registered value.");
}

}  // namespace vex
