#include "defvars/detection.hpp"

#include <cstdint>
#include <string>
#include <vector>

#include "defvars/definition_graph.hpp"
#include "defvars/jacobian_walk.hpp"
#include "defvars/pending_rows.hpp"
#include "host/operations.hpp"

namespace vex {

namespace {

/// One search and its working data.
class Detection {
public:
    Detection(ModelHandle model, const DefinedVariables& known)
        : nmo(model),
          graph(model, known),
          pending(nmoM(model)),
          isCandidate(static_cast<std::size_t>(nmoN(model)), false) {}

    void run() {
        markCandidates();
        fillPendingRows();
        while (!pending.isEmpty()) settleRow(pending.takeFirst());
    }

    [[nodiscard]] const Definitions& definitions() const { return graph.all(); }

private:
    void markCandidates();
    void fillPendingRows();
    void settleRow(std::int32_t row);
    void choose(std::int32_t variable);
    [[nodiscard]] bool hasEquality(std::int32_t variable) const;

    [[nodiscard]] auto flagOf(std::int32_t variable) {
        return isCandidate[static_cast<std::size_t>(variable)];
    }

    ModelHandle nmo;
    DefinitionGraph graph;
    PendingRows pending;
    std::vector<bool> isCandidate;             ///< [nbVariables]
    std::vector<std::int32_t> rowsCandidates;  ///< of one row, in its order
};

void Detection::markCandidates() {
    const auto nbVariables = static_cast<std::int32_t>(isCandidate.size());
    for (std::int32_t j = 0; j < nbVariables; ++j) {
        const bool isOpen = nmoGetVarLowerOne(nmo, j) != nmoGetVarUpperOne(nmo, j) &&
                            nmoGetVarTypeOne(nmo, j) == variable_type::continuous &&
                            !graph.all().isDefined(j);
        if (!isOpen || !hasEquality(j)) continue;
        flagOf(j) = true;
        forEachEntry(ColumnWalk(nmo, j), [this](const JacobianEntry& entry) {
            pending.countCandidate(entry.index, entry.canBeSolvedFor());
        });
    }
}

/// Is there an equality that can be solved for the variable?
bool Detection::hasEquality(std::int32_t variable) const {
    for (ColumnWalk walk(nmo, variable); !walk.isAtEnd();) {
        const JacobianEntry entry = walk.next();
        if (entry.index >= 0 && entry.canBeSolvedFor() &&
            nmoGetEquTypeOne(nmo, entry.index) == equation_type::equality)
            return true;
    }
    return false;
}

void Detection::fillPendingRows() {
    const std::int32_t nbRows = nmoM(nmo);
    for (std::int32_t i = 0; i < nbRows; ++i) {
        if (pending.hasSolvable(i) && nmoGetEquTypeOne(nmo, i) == equation_type::equality &&
            graph.all().variableDefinedBy(i) < 0)
            pending.insert(i);
    }
}

/// Lets the row define its first candidate that closes no cycle, if there is one.
void Detection::settleRow(std::int32_t row) {
    graph.startRow(row);
    rowsCandidates.clear();
    forEachEntry(RowWalk(nmo, row), [this](const JacobianEntry& entry) {
        if (graph.all().isDefined(entry.index))
            graph.addDefinedVariable(entry.index);
        else if (flagOf(entry.index) && entry.isLinear())
            rowsCandidates.push_back(entry.index);
    });
    for (const std::int32_t variable : rowsCandidates) {
        if (graph.wouldCreateCycle(variable)) continue;
        choose(variable);
        return;
    }
}

void Detection::choose(std::int32_t variable) {
    graph.define(variable);
    flagOf(variable) = false;
    forEachEntry(ColumnWalk(nmo, variable), [this](const JacobianEntry& entry) {
        pending.uncountCandidate(entry.index, entry.canBeSolvedFor());
    });
}

}  // namespace

void findDefiningEquations(ModelHandle nmo, DefinedVariables& definedVariables,
                           DefiningEquations& definingEquations) {
    const EnvironmentHandle nev = nmoEnvironment(nmo);
    nevLogStatPChar(nev, "Searching for equations that define variables... ");
    const std::size_t nbKnown = definedVariables.size();
    Detection detection(nmo, definedVariables);
    detection.run();

    // Ascending, so that a map grows at its end in O(1); what it holds already stays.
    const Definitions& found = detection.definitions();
    for (std::int32_t j = 0; j < nmoN(nmo); ++j) {
        if (found.isDefined(j))
            definedVariables.emplace_hint(definedVariables.end(), j, found.rowDefining(j));
    }
    for (std::int32_t i = 0; i < nmoM(nmo); ++i) {
        const std::int32_t j = found.variableDefinedBy(i);
        if (j >= 0) definingEquations.emplace_hint(definingEquations.end(), i, j);
    }
    nevLogStatPChar(nev,
                    ("found " + std::to_string(definedVariables.size() - nbKnown) + "\n").c_str());
}

}  // namespace vex
