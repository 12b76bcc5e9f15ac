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

/// Descending by weight, of equal weights the larger index first. A weight that is not a number
/// says nothing, so it counts as the least: every pair of terms has an order.
bool comesFirst(const Term& a, const Term& b) {
    const auto key = [](const Term& term) {
        const double weight = std::fabs(term.coefficient);
        return std::pair(std::isnan(weight) ? -1.0 : weight, term.variable);
    };
    return key(b) < key(a);
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
    std::sort(terms.begin(), terms.end(), comesFirst);

    objectives.clear();
    objectives.reserve(terms.size());
    nbObjectives = static_cast<std::int32_t>(terms.size());
    for (const Term& term : terms) {
        // A coefficient of 0 counts as negative in either sense, one that is not a number as what
        // leads to a minimum.
        const bool maximiseVariable = nmoSense(nmo) == objective_sense::minimise
                                          ? term.coefficient <= 0.0
                                          : term.coefficient > 0.0;
        objectives.push_back(getVariable(term.variable));
        solver->getModel().addObjective(objectives.back(),
                                        maximiseVariable ? LS_MAXIMIZE : LS_MINIMIZE);
    }
}

}  // namespace vex
