#include "defvars/definition_graph.hpp"

#include <algorithm>
#include <cassert>

namespace vex {

DefinitionGraph::DefinitionGraph(const Equalities& equalities, const DefinedVariables& known)
    : jacobian(equalities),
      definitions(equalities),
      order(equalities.nbVariables()),
      landmarks(definitions, equalities.nbVariables()),
      visits(index(equalities.nbVariables())) {
    for (const auto& [variable, row] : known) {
        startRow(row);
        if (isOrdered && wouldCreateCycle(variable)) {
            isOrdered = false;
            order = OrderList(equalities.nbVariables());
        }
        define(variable);
    }
}

void DefinitionGraph::startRow(std::int32_t row) {
    currentRow = row;
    ++nbRowsStarted;
    firstUsed = none;
    usedLandmarks = 0;
    forward.open.clear();
    forward.expanded.clear();
    forward.rest = {};
    for (const Equalities::Entry& entry : jacobian.row(row)) {
        if (definitions.isDefined(entry.index)) useDefinedVariable(entry.index);
    }
}

void DefinitionGraph::useDefinedVariable(std::int32_t variable) {
    if (firstUsed == none || order.isBefore(variable, firstUsed)) firstUsed = variable;
    usedLandmarks |= landmarks.usedBy(variable);
    reach(variable);
}

void DefinitionGraph::reach(std::int32_t v) {
    if (isReached(v)) return;
    visits[index(v)].reachedFor = nbRowsStarted;
    if (!definitions.isDefined(v)) return;
    forward.open.push_back(v);
    std::push_heap(forward.open.begin(), forward.open.end(), laterForward());
}

bool DefinitionGraph::wouldCreateCycle(std::int32_t variable) {
    if (firstUsed == none) return false;
    if (isReached(variable) || (usedLandmarks & landmarks.usersOf(variable)) != 0) return true;
    visits[index(variable)].dependentIn = ++nbSearches;
    backward.open.clear();
    backward.expanded.clear();
    backward.rest = definitions.rowsOf(variable);
    isInFirstColumn = true;
    lastDependent = none;
    return searchesMeet();
}

bool DefinitionGraph::searchesMeet() {
    for (std::int64_t nbSteps = 1;; ++nbSteps) {
        if (isInFirstColumn && backward.rest.empty()) isInFirstColumn = false;
        if (backward.isExhausted() || forward.isExhausted() || searchesHavePassed()) return false;
        if (stepBackward() || stepForward()) {
            learnFromMeeting(nbSteps);
            return true;
        }
    }
}

/// Searches that have cost as much as a walk through everything pay for a landmark.
void DefinitionGraph::learnFromMeeting(std::int64_t nbSteps) {
    nbFutileSteps += nbSteps;
    if (nbFutileSteps < nbDefined || landmarks.areAllPlaced()) return;
    landmarks.place(meetingPoint);
    nbFutileSteps = 0;
}

/// Is everything that leads to the variable and is not looked into in front of everything that the
/// row leads to and is not looked into?
bool DefinitionGraph::searchesHavePassed() const {
    return forward.rest.empty() && backward.rest.empty() &&
           order.isBefore(backward.open.front(), forward.open.front());
}

/// One entry of a column. @return whether it belongs to a variable that the row depends on.
bool DefinitionGraph::stepBackward() {
    if (backward.rest.empty()) {
        std::pop_heap(backward.open.begin(), backward.open.end(), laterBackward());
        backward.expanded.push_back(backward.open.back());
        backward.open.pop_back();
        backward.rest = definitions.rowsOf(backward.expanded.back());
        if (backward.rest.empty()) return false;
    }
    const std::int32_t u = definitions.variableDefinedBy(backward.takeEntry());
    if (u == none || isDependent(u)) return false;
    visits[index(u)].dependentIn = nbSearches;
    if (isInFirstColumn && (lastDependent == none || order.isBefore(lastDependent, u)))
        lastDependent = u;
    // What stands in front of all that the row uses is not used by it.
    if (order.isBefore(u, firstUsed)) return false;
    backward.open.push_back(u);
    std::push_heap(backward.open.begin(), backward.open.end(), laterBackward());
    meetingPoint = u;
    return isReached(u);
}

/// One entry of a row. @return whether its variable depends on the one in question.
bool DefinitionGraph::stepForward() {
    if (forward.rest.empty()) {
        std::pop_heap(forward.open.begin(), forward.open.end(), laterForward());
        forward.expanded.push_back(forward.open.back());
        forward.open.pop_back();
        forward.rest = definitions.used(forward.expanded.back());
        if (forward.rest.empty()) return false;
    }
    const std::int32_t w = forward.takeEntry();
    reach(w);
    meetingPoint = definitions.isDefined(w) ? w : forward.expanded.back();
    return isDependent(w);
}

void DefinitionGraph::define(std::int32_t variable) {
    if (isOrdered) place(variable);
    definitions.add(variable, currentRow);
    ++nbDefined;
    landmarks.learn(variable, usedLandmarks);
    assert(!isOrdered ||
           (isInPlace(variable) && areInPlace(forward.expanded) && areInPlace(backward.expanded)));
}

/// Is the defined variable `v` in front of all that it uses and behind all that use it?
bool DefinitionGraph::isInPlace(std::int32_t v) const {
    const auto areInOrder = [this](std::int32_t user, std::int32_t used) {
        return user == none || user == used || !definitions.isDefined(used) ||
               order.isBefore(user, used);
    };
    const Equalities::Entries usedByIt = definitions.used(v);
    const Equalities::Entries rows = definitions.rowsOf(v);
    return std::all_of(usedByIt.begin(), usedByIt.end(),
                       [&](const auto& entry) { return areInOrder(v, entry.index); }) &&
           std::all_of(rows.begin(), rows.end(), [&](const auto& entry) {
               return areInOrder(definitions.variableDefinedBy(entry.index), v);
           });
}

bool DefinitionGraph::areInPlace(const std::vector<std::int32_t>& moved) const {
    return std::all_of(moved.begin(), moved.end(), [this](std::int32_t v) { return isInPlace(v); });
}

/// Places `variable` behind all that depend on it and in front of all that it depends on.
void DefinitionGraph::place(std::int32_t variable) {
    if (firstUsed == none)
        order.placeLast(variable);
    else if (forward.isExhausted())
        placeBehindDependents(variable);
    else
        placeBetweenSearches(variable);
}

/// All that the row leads to is known and moves behind the last dependent, where it is not yet.
void DefinitionGraph::placeBehindDependents(std::int32_t variable) {
    if (isInFirstColumn)
        order.placeLast(variable);  // who the last dependent is has not come out
    else if (lastDependent == none)
        order.placeBefore(variable, firstUsed);
    else
        order.placeAfter(variable, lastDependent);
    std::int32_t previous = variable;
    for (const std::int32_t w : forward.expanded) {
        if (order.isBefore(variable, w)) continue;
        order.remove(w);
        order.placeAfter(w, previous);
        previous = w;
    }
}

/// What the searches have looked into stands in front of the first variable that the row leads to
/// and that is not looked into entirely: at first what depends on the new variable, then the
/// variable, then what it depends on.
void DefinitionGraph::placeBetweenSearches(std::int32_t variable) {
    std::vector<std::int32_t>& used = forward.expanded;
    std::int32_t border = forward.open.empty() ? none : forward.open.front();
    if (!forward.rest.empty()) {
        border = used.back();
        used.pop_back();
    }
    // Expanded from the end of the list on.
    std::vector<std::int32_t>& dependents = backward.expanded;
    std::reverse(dependents.begin(), dependents.end());
    for (const std::int32_t u : dependents) {
        if (order.isBefore(u, border)) continue;
        order.remove(u);
        order.placeBefore(u, border);
    }
    order.placeBefore(variable, border);
    for (const std::int32_t w : used) {
        order.remove(w);
        order.placeBefore(w, border);
    }
}

}  // namespace vex
