#include <algorithm>
#include <cstdint>

#include "defvars/detection.hpp"
#include "defvars/option_pairs.hpp"
#include "host/operations.hpp"
#include "host/option_names.hpp"
#include "translate/nlocalsolver.hpp"
#include "translate/translation_error.hpp"

/// The order in which an instance becomes a model: objective, rows, unused definitions, closing.

namespace vex {

namespace {

using localsolver::LSOperator;

constexpr const char* thisMethod = "NorvLocalSolver::setupModel";

void configureInstance(ModelHandle nmo) {
    nmoObjStyleSet(nmo, objective_style::function);
    nmoObjReformSet(nmo, 1);
    nmoIndexBaseSet(nmo, 0);
    if (nmoGetEquTypeCnt(nmo, equation_type::free) != 0) nmoSetNRowPerm(nmo);
}

/// Room for the largest row, so that no row has to grow the buffers.
RowBuffers makeBuffers(ModelHandle nmo) {
    std::int32_t nbEntries = nmoN(nmo);
    if (nmoUseQ(nmo) != 0) nbEntries = std::max(nbEntries, nmoMaxQNZ(nmo));
    RowBuffers buffers;
    buffers.reserveEntries(nbEntries);
    buffers.reserveInstructions(nmoNLCodeSizeMaxRow(nmo));
    return buffers;
}

LSOperator relationOf(std::int32_t equationType) {
    switch (equationType) {
        case equation_type::equality:
        case equation_type::logic:
            return LS_OP_EQ;
        case equation_type::greater:
            return LS_OP_GEQ;
        case equation_type::less:
            return LS_OP_LEQ;
        case equation_type::free:
        case equation_type::external:
        case equation_type::cone:
            throw translationError(__LINE__, thisMethod, "Unsupported equation type.");
        default:
            throw translationError(__LINE__, thisMethod, "Unexpected equation type.");
    }
}

}  // namespace

void NorvLocalSolver::setupModel() {
    intConstants.clear();
    doubleConstants.clear();
    configureInstance(nmo);
    findDefinitions();
    RowBuffers buffers = makeBuffers(nmo);
    variables.assign(static_cast<std::size_t>(nmoN(nmo)), LSExpression());
    constraints.assign(static_cast<std::size_t>(nmoM(nmo)), LSExpression());
    definingExpressions_.clear();
    nbLowerClamped = 0;
    nbUpperClamped = 0;
    setupDepth = 0;

    addObjective(buffers);
    const std::int32_t nbRows = nmoM(nmo);
    for (std::int32_t i = 0; i < nbRows; ++i) {
        if (definingEquations.count(i) == 0) addRow(i, buffers);
    }
    // Also those that no remaining row uses: their bounds must hold all the same.
    for (const auto& [variable, equation] : definedVariables) getVariable(variable);
    solver->getModel().close();

    warnOfClampedBounds();
    intConstants.clear();
    doubleConstants.clear();
}

/// What the user says comes first: the search keeps it.
void NorvLocalSolver::findDefinitions() {
    if (!readDefinedVariableOptions(nmo, opt, definedVariables, definingEquations)) {
        throw translationError(__LINE__, thisMethod,
                               "Error processing defined variables information from options file.");
    }
    if (optGetIntStr(opt, option::aggrvars) != 0)
        findDefiningEquations(nmo, definedVariables, definingEquations);
}

void NorvLocalSolver::addObjective(RowBuffers& buffers) {
    if (optGetIntStr(opt, option::hierarchicalobj) != 0 && nmoObjNZ(nmo) > 0) {
        makeHierarchicalObjectives(buffers);
        return;
    }
    const LSExpression f =
        makeFunction(/*row=*/-1, buffers, /*definedVar=*/-1, /*coefOut=*/nullptr);
    objectives.assign(1, f);
    nbObjectives = 1;
    const double constant = nmoObjConst(nmo);
    if (constant != 0.0) f.addOperand(makeConstant(constant));
    solver->getModel().addObjective(
        f, nmoSense(nmo) == objective_sense::minimise ? LS_MINIMIZE : LS_MAXIMIZE);
}

void NorvLocalSolver::addRow(std::int32_t i, RowBuffers& buffers) {
    const LSExpression f = makeFunction(i, buffers, /*definedVar=*/-1, /*coefOut=*/nullptr);
    const LSExpression rightHandSide = makeConstant(nmoGetRhsOne(nmo, i));
    const LSOperator relation = relationOf(nmoGetEquTypeOne(nmo, i));
    const localsolver::LSModel model = solver->getModel();
    const LSExpression constraint = model.createExpression(relation);
    constraint.addOperand(f);
    constraint.addOperand(rightHandSide);
    constraints[static_cast<std::size_t>(i)] = constraint;
    model.addConstraint(constraint);
    if (nmoDict(nmo) != nullptr) constraint.setName(nmoGetEquNameOne(nmo, i, textBuf));
}

void NorvLocalSolver::warnOfClampedBounds() const {
    if (nbLowerClamped > 0) {
        nevLogStat(nev,
                   "Warning: Increased the lower bound for some continuous variables to -1e10.");
    }
    if (nbUpperClamped > 0) {
        nevLogStat(nev,
                   "Warning: Decreased the upper bound for some continuous variables to 1e10.");
    }
}

}  // namespace vex
