#include "defvars/detection.hpp"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "defvars/definition_graph.hpp"
#include "defvars/definitions.hpp"
#include "defvars/jacobian.hpp"
#include "defvars/pending_rows.hpp"
#include "host/operations.hpp"

namespace vex {

namespace {

/// One search and its working data.
class Detection {
public:
    Detection(ModelHandle model, const DefinedVariables& known)
        : nmo_(model),
          jacobian_(model, known),
          graph_(jacobian_, known),
          pending_(jacobian_.nbRows()),
          isCandidate_(static_cast<std::size_t>(jacobian_.nbVariables()), false) {}

    void run() {
        markCandidates();
        fillPendingRows();
        while (!pending_.isEmpty()) settleRow(pending_.takeFirst());
    }

    [[nodiscard]] const Definitions& found() const { return graph_.all(); }

private:
    void markCandidates();
    [[nodiscard]] bool canBeCandidate(std::int32_t variable) const;
    void fillPendingRows();
    void settleRow(std::int32_t row);
    void prefetchVariablesOf(std::int32_t row) const;
    void define(std::int32_t variable);

    ModelHandle nmo_;
    Jacobian jacobian_;
    DefinitionGraph graph_;
    PendingRows pending_;
    std::vector<bool> isCandidate_;  ///< [nbVariables]
};

void Detection::markCandidates() {
    for (std::size_t j = 0; j < isCandidate_.size(); ++j)
        isCandidate_[j] = canBeCandidate(static_cast<std::int32_t>(j));
}

bool Detection::canBeCandidate(std::int32_t variable) const {
    const Jacobian::Entries column = jacobian_.column(variable);
    return !found().isDefined(variable) &&
           std::any_of(column.begin(), column.end(),
                       [this](const Jacobian::Entry& entry) {
                           return entry.canBeSolvedFor && jacobian_.isEquality(entry.index);
                       }) &&
           nmoGetVarLowerOne(nmo_, variable) != nmoGetVarUpperOne(nmo_, variable) &&
           nmoGetVarTypeOne(nmo_, variable) == variable_type::continuous;
}

void Detection::fillPendingRows() {
    for (std::int32_t i = 0; i < jacobian_.nbRows(); ++i) {
        if (!jacobian_.isEquality(i) || found().definitionBy(i) != Definitions::none) continue;
        for (const Jacobian::Entry& entry : jacobian_.row(i)) {
            if (isCandidate_[static_cast<std::size_t>(entry.index)])
                pending_.countCandidate(i, entry.canBeSolvedFor);
        }
        if (pending_.hasSolvable(i)) pending_.insert(i);
    }
}

/// Lets the row define its first candidate that closes no cycle, if there is one. The size of the
/// coefficient no longer matters: the row's function is built from it, or setup refuses it.
void Detection::settleRow(std::int32_t row) {
    prefetchVariablesOf(row);
    graph_.startRow(row);
    for (const Jacobian::Entry& entry : jacobian_.row(row)) {
        if (entry.isLinear && isCandidate_[static_cast<std::size_t>(entry.index)] &&
            !graph_.wouldCreateCycle(entry.index)) {
            define(entry.index);
            return;
        }
    }
}

/// In an instance larger than the caches nearly every step to a variable or a row waits for memory.
/// What the next steps need is asked for all at once, so that they wait together.
void Detection::prefetchVariablesOf(std::int32_t row) const {
    for (const Jacobian::Entry& entry : jacobian_.row(row)) {
        found().prefetchOf(entry.index);
        jacobian_.prefetchColumnStart(entry.index);
    }
}

void Detection::define(std::int32_t variable) {
    for (const Jacobian::Entry& entry : jacobian_.column(variable)) {
        pending_.prefetch(entry.index);
        jacobian_.prefetchRowStart(entry.index);
    }
    graph_.define(variable);
    isCandidate_[static_cast<std::size_t>(variable)] = false;
    for (const Jacobian::Entry& entry : jacobian_.column(variable)) {
        pending_.uncountCandidate(entry.index, entry.canBeSolvedFor);
        jacobian_.prefetchRow(entry.index);  // likely to be settled soon
    }
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
    const Definitions& definitions = detection.found();
    for (std::int32_t j = 0; j < nmoN(nmo); ++j) {
        const std::int32_t d = definitions.definitionOf(j);
        if (d != Definitions::none)
            definedVariables.emplace_hint(definedVariables.end(), j, definitions.row(d));
    }
    for (std::int32_t i = 0; i < nmoM(nmo); ++i) {
        const std::int32_t d = definitions.definitionBy(i);
        if (d != Definitions::none)
            definingEquations.emplace_hint(definingEquations.end(), i, definitions.variable(d));
    }
    nevLogStatPChar(nev,
                    ("found " + std::to_string(definedVariables.size() - nbKnown) + "\n").c_str());
}

}  // namespace vex
