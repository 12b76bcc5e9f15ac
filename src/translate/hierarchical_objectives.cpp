#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include "host/operations.hpp"
#include "translate/nlocalsolver.hpp"
#include "translate/translation_error.hpp"

/// One objective per variable of the linear objective, the largest absolute coefficient first.

namespace vex {

namespace {

struct Term {
    std::int32_t variable;
    double coefficient;
};

/// Ascending by weight: the priorities run from the last term back to the first.
bool weighsLess(const Term& a, const Term& b) {
    return std::pair(std::fabs(a.coefficient), a.variable) <
           std::pair(std::fabs(b.coefficient), b.variable);
}

}  // namespace

void NorvLocalSolver::makeHierarchicalObjectives(RowBuffers& buffers) {
    const bool isFunction = nmoObjStyle(nmo) == objective_style::function;
    if (isFunction && nmoGetObjOrder(nmo) != function_order::linear) {
        throw translationError(
            __LINE__, "NorvLocalSolver::makeHierarchicalObjectives",
            "NORV objective function must be linear for hierarchical optimization.");
    }
    RowStatistics statistics;
    if (isFunction)
        statistics.nbEntries = nmoObjNZ(nmo);
    else
        statistics.nbEntries = nmoObjVar(nmo) != nmoValNAInt(nmo) ? 1 : 0;
    buffers.reserveEntries(statistics.nbEntries);
    fetchSparsePart(/*row=*/-1, buffers, statistics);

    std::vector<Term> terms;
    terms.reserve(static_cast<std::size_t>(statistics.nbEntries));
    for (std::int32_t k = 0; k < statistics.nbEntries; ++k) {
        const auto at = static_cast<std::size_t>(k);
        terms.push_back({buffers.colIdx[at], buffers.values[at]});
    }
    std::stable_sort(terms.begin(), terms.end(), weighsLess);
    std::reverse(terms.begin(), terms.end());

    const bool minimise = nmoSense(nmo) == objective_sense::minimise;
    objectives.clear();
    objectives.reserve(terms.size());
    nbObjectives = static_cast<std::int32_t>(terms.size());
    for (const Term& term : terms) {
        // A coefficient of 0 counts as negative in either sense.
        const bool maximiseVariable = minimise == !(term.coefficient > 0.0);
        objectives.push_back(getVariable(term.variable));
        solver->getModel().addObjective(objectives.back(),
                                        maximiseVariable ? LS_MAXIMIZE : LS_MINIMIZE);
    }
}

}  // namespace vex
