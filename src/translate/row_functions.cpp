#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>

#include "host/operations.hpp"
#include "translate/nlocalsolver.hpp"
#include "translate/translation_error.hpp"

/// The function of one row, term by term. Row -1 is the objective.

namespace vex {

using localsolver::LSExpression;
using localsolver::LSModel;

namespace {

constexpr const char* thisMethod = "NorvLocalSolver::makeFunction";

}  // namespace

LSExpression NorvLocalSolver::makeFunction(std::int32_t row, RowBuffers& buffers,
                                           std::int32_t definedVar, double* coefOut) {
    if (++setupDepth > deepestNesting) throw RecursionDepthLimitReached();
    LSExpression sum = solver->getModel().createExpression(LS_OP_SUM);
    RowStatistics statistics = rowStatistics(row);
    buffers.reserveEntries(std::max(statistics.nbEntries, statistics.nbQuadratic));
    fetchSparsePart(row, buffers, statistics);
    const bool definedVarFound =
        addLinearTerms(sum, buffers, statistics.nbEntries, definedVar, coefOut);
    if (definedVar >= 0 && !definedVarFound) {
        const std::string variable = nameOfVariable(definedVar);
        throw translationError(__LINE__, thisMethod,
                               "Defined variable " + variable +
                                   " does not appear linearly in equation " + nameOfEquation(row));
    }
    addQuadraticTerms(sum, row, buffers, statistics.nbQuadratic);
    if (orderOf(row) == function_order::nonlinear) sum = addNonlinearPart(sum, row, buffers);
    --setupDepth;
    return sum;
}

NorvLocalSolver::RowStatistics NorvLocalSolver::rowStatistics(std::int32_t row) const {
    RowStatistics s;
    const bool objectiveIsFunction = row < 0 && nmoObjStyle(nmo) == objective_style::function;
    if (row >= 0)
        nmoGetRowStat(nmo, row, &s.nbEntries, &s.nbQuadratic, &s.nbNonlinear);
    else if (objectiveIsFunction)
        nmoGetObjStat(nmo, &s.nbEntries, &s.nbQuadratic, &s.nbNonlinear);
    else
        s.nbEntries = nmoObjVar(nmo) != nmoValNAInt(nmo) ? 1 : 0;

    if (nmoUseQ(nmo) != 0) {
        if (row >= 0)
            s.nbQuadratic = nmoGetRowQNZOne(nmo, row);
        else
            s.nbQuadratic = objectiveIsFunction ? nmoObjQNZ(nmo) : 0;
    }
    return s;
}

void NorvLocalSolver::fetchSparsePart(std::int32_t row, RowBuffers& buffers,
                                      RowStatistics& statistics) const {
    if (row >= 0) {
        nmoGetRowSparse(nmo, row, buffers.colIdx.get(), buffers.values.get(), buffers.nlFlags.get(),
                        &statistics.nbEntries, &statistics.nbNonlinear);
    } else if (nmoObjStyle(nmo) == objective_style::function) {
        nmoGetObjSparse(nmo, buffers.colIdx.get(), buffers.values.get(), buffers.nlFlags.get(),
                        &statistics.nbEntries, &statistics.nbNonlinear);
    } else if (statistics.nbEntries > 0) {
        buffers.colIdx[0] = nmoObjVar(nmo);
        buffers.nlFlags[0] = 0;
        buffers.values[0] = 1.0;
    }
}

/// @return whether `definedVar` was met with a nonzero coefficient.
bool NorvLocalSolver::addLinearTerms(LSExpression sum, const RowBuffers& buffers,
                                     std::int32_t nbEntries, std::int32_t definedVar,
                                     double* coefOut) {
    const LSModel model = solver->getModel();
    bool definedVarFound = false;
    for (std::int32_t k = 0; k < nbEntries; ++k) {
        const auto at = static_cast<std::size_t>(k);
        // The instruction list holds the whole contribution of a nonlinear variable.
        if (buffers.nlFlags[at] != 0) continue;
        const std::int32_t j = buffers.colIdx[at];
        const double coefficient = buffers.values[at];
        if (j == definedVar) {
            if (coefficient == 0.0) continue;
            *coefOut = coefficient;
            definedVarFound = true;
        } else if (coefficient == 1.0) {
            sum.addOperand(getVariable(j));
        } else {
            const LSExpression variable = getVariable(j);
            const LSExpression term = model.createExpression(LS_OP_PROD);
            term.addOperand(variable);
            term.addOperand(model.createConstant(coefficient));
            sum.addOperand(term);
        }
    }
    return definedVarFound;
}

void NorvLocalSolver::addQuadraticTerms(LSExpression sum, std::int32_t row,
                                        const RowBuffers& buffers, std::int32_t nbPairs) {
    if (nbPairs < 1) return;
    if (row >= 0)
        nmoGetRowQ(nmo, row, buffers.colIdx.get(), buffers.nlFlags.get(), buffers.values.get());
    else
        nmoGetObjQ(nmo, buffers.colIdx.get(), buffers.nlFlags.get(), buffers.values.get());
    const LSModel model = solver->getModel();
    for (std::int32_t k = 0; k < nbPairs; ++k) {
        const auto at = static_cast<std::size_t>(k);
        const std::int32_t i = buffers.colIdx[at];
        const std::int32_t j = buffers.nlFlags[at];
        // The host lists second derivatives: twice the coefficient on the diagonal.
        const double coefficient = i == j ? buffers.values[at] * 0.5 : buffers.values[at];
        const LSExpression first = getVariable(i);
        const LSExpression second = getVariable(j);
        const LSExpression term = model.createExpression(LS_OP_PROD);
        term.addOperand(first);
        term.addOperand(second);
        if (coefficient != 1.0) term.addOperand(model.createConstant(coefficient));
        sum.addOperand(term);
    }
}

/// @return `sum`, extended: it is unnamed and nobody else holds it.
LSExpression NorvLocalSolver::addNonlinearPart(LSExpression sum, std::int32_t row,
                                               RowBuffers& buffers) {
    buffers.reserveInstructions(nmoNLCodeSizeMaxRow(nmo));
    std::int32_t nbInstructions = 0;
    if (row >= 0) {
        nmoDirtyGetRowFNLInstr(nmo, row, &nbInstructions, buffers.instrOpcodes.get(),
                               buffers.instrFields.get());
    } else {
        nmoDirtyGetObjFNLInstr(nmo, &nbInstructions, buffers.instrOpcodes.get(),
                               buffers.instrFields.get());
    }
    if (nbInstructions > buffers.instrSize + 1) {
        throw translationError(__LINE__, thisMethod,
                               "The host delivered " + std::to_string(nbInstructions) +
                                   " instructions where it announced at most " +
                                   std::to_string(buffers.instrSize) + ".");
    }
    const LSExpression nonlinear = convertExpression(nbInstructions, buffers.instrOpcodes.get(),
                                                     buffers.instrFields.get(), nmoPPool(nmo));
    const double factor = row >= 0 ? 1.0 : objectiveFactor();
    return makeLinearCombination(1.0, sum, /*xExtendable=*/true, factor, nonlinear,
                                 /*yExtendable=*/true, 0.0);
}

/// The instruction list of the objective belongs to a row objective · J + list = 0.
double NorvLocalSolver::objectiveFactor() const {
    const double jacobianValue = nmoObjJacVal(nmo);
    if (jacobianValue == 0.0 || std::isnan(jacobianValue)) {
        throw translationError(__LINE__, thisMethod,
                               "The objective function cannot be scaled by its Jacobian value.");
    }
    return -1.0 / jacobianValue;
}

std::int32_t NorvLocalSolver::orderOf(std::int32_t row) const {
    if (row >= 0) return nmoGetEquOrderOne(nmo, row);
    return nmoObjStyle(nmo) == objective_style::function ? nmoGetObjOrder(nmo)
                                                         : function_order::linear;
}

}  // namespace vex
