#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>

#include "host/operations.hpp"
#include "translate/nlocalsolver.hpp"
#include "translate/saturate.hpp"
#include "translate/translation_error.hpp"

/// What stands for a variable: a decision, or the definition that its equation yields.

namespace vex {

namespace {

using localsolver::LSExpression;
using localsolver::LSModel;
using localsolver::LSOperator;

constexpr const char* thisMethod = "NorvLocalSolver::getVariable";

/// A lower bound that is further from 0 than this excludes 0.
constexpr double zeroTolerance = 1e-6;
constexpr double belowOne = 0.999999;

template <class Bound>
LSExpression makeDecision(const LSModel& model, LSOperator op, Bound lower, Bound upper) {
    const LSExpression x = model.createExpression(op);
    x.addOperand(model.createConstant(lower));
    x.addOperand(model.createConstant(upper));
    return x;
}

LSExpression makeRelation(const LSModel& model, LSOperator op, LSExpression x, double value) {
    const LSExpression relation = model.createExpression(op);
    relation.addOperand(x);
    relation.addOperand(model.createConstant(value));
    return relation;
}

}  // namespace

std::string NorvLocalSolver::nameOfVariable(std::int32_t j) {
    return nmoGetVarNameOne(nmo, j, textBuf);
}

std::string NorvLocalSolver::nameOfEquation(std::int32_t i) {
    return nmoGetEquNameOne(nmo, i, textBuf);
}

LSExpression NorvLocalSolver::makeVariable(std::int32_t j) {
    const auto definition = definedVariables.find(j);
    if (definition != definedVariables.end())
        defineVariable(j, definition->second);
    else
        decideVariable(j);
    const LSExpression x = variables[static_cast<std::size_t>(j)];
    if (nmoDict(nmo) != nullptr) x.setName(nmoGetVarNameOne(nmo, j, textBuf));
    return x;
}

void NorvLocalSolver::decideVariable(std::int32_t j) {
    const std::int32_t type = nmoGetVarTypeOne(nmo, j);
    double lower = nmoGetVarLowerOne(nmo, j);
    double upper = nmoGetVarUpperOne(nmo, j);
    // A verdict that rests on an imposed bound is weakened when the result is reported.
    if (lower == nmoMinf(nmo)) {
        lower = -imposedBound;
        ++nbLowerClamped;
    }
    if (upper == nmoPinf(nmo)) {
        upper = imposedBound;
        ++nbUpperClamped;
    }
    const LSModel model = solver->getModel();
    LSExpression& x = variables[static_cast<std::size_t>(j)];
    switch (type) {
        case variable_type::continuous:
            x = makeDecision(model, LS_OP_FLOAT, lower, upper);
            break;
        case variable_type::binary:
            x = model.createExpression(LS_OP_BOOL);
            if (lower > zeroTolerance) model.addConstraint(makeRelation(model, LS_OP_EQ, x, 1.0));
            if (upper < belowOne) model.addConstraint(makeRelation(model, LS_OP_EQ, x, 0.0));
            break;
        case variable_type::integer:
            x = makeDecision(model, LS_OP_INT, saturate<std::int64_t>(std::ceil(lower)),
                             saturate<std::int64_t>(std::floor(upper)));
            break;
        case variable_type::semiContinuous:
        case variable_type::semiInteger:
            x = makeDecision(model, type == variable_type::semiContinuous ? LS_OP_FLOAT : LS_OP_INT,
                             std::min(0.0, lower), upper);
            if (lower > zeroTolerance) {
                const LSExpression either = model.createExpression(LS_OP_OR);
                either.addOperand(makeRelation(model, LS_OP_EQ, x, 0.0));
                either.addOperand(makeRelation(model, LS_OP_GEQ, x, lower));
                model.addConstraint(either);
            }
            break;
        case variable_type::specialOrdered1:
        case variable_type::specialOrdered2:
            throw translationError(__LINE__, thisMethod, "Special Ordered Sets not supported.");
        default:
            throw translationError(__LINE__, thisMethod, "Unexpected variable type.");
    }
}

void NorvLocalSolver::defineVariable(std::int32_t j, std::int32_t equation) {
    if (!varsInProgress.insert(j).second) {
        throw translationError(
            __LINE__, thisMethod,
            "Recognized circular definition when handling defined variable " + nameOfVariable(j));
    }
    RowBuffers buffers;  // the caller may be in the middle of a row in its own
    double coefficient = 0.0;
    const LSExpression f = makeFunction(equation, buffers, j, &coefficient);
    const LSExpression excess =
        makeLinearCombination(1.0, f, /*xExtendable=*/true, 0.0, LSExpression(),
                              /*yExtendable=*/true, -nmoGetRhsOne(nmo, equation));
    const double factor = -1.0 / coefficient;
    if (!std::isfinite(factor)) {
        const std::string variable = nameOfVariable(j);
        throw translationError(__LINE__, thisMethod,
                               "Coefficient of defined variable " + variable + " in equation " +
                                   nameOfEquation(equation) +
                                   " is too small to solve the equation for the variable.");
    }
    const LSExpression x = scaleExpression(excess, /*extendable=*/true, factor);
    variables[static_cast<std::size_t>(j)] = x;
    definingExpressions_.insert(x.getIndex());
    varsInProgress.erase(j);

    // The host's own bounds: a definition needs no box, so infinite ones ask for nothing.
    const LSModel model = solver->getModel();
    const double lower = nmoGetVarLowerOne(nmo, j);
    if (lower != nmoMinf(nmo)) model.addConstraint(makeRelation(model, LS_OP_GEQ, x, lower));
    const double upper = nmoGetVarUpperOne(nmo, j);
    if (upper != nmoPinf(nmo)) model.addConstraint(makeRelation(model, LS_OP_LEQ, x, upper));
}

}  // namespace vex
