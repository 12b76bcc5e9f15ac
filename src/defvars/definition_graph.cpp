#include "defvars/definition_graph.hpp"

#include <algorithm>
#include <cassert>

namespace vex {

DefinitionGraph::DefinitionGraph(const Jacobian& source, const DefinedVariables& known)
    : jacobian(source),
      definitions(source),
      order(source.nbRows()),
      landmarks(definitions, source),
      visits(index(source.nbRows())),
      reachedFor(index(source.nbVariables()), 0) {
    for (const auto& [variable, row] : known) {
        startRow(row);
        if (isOrdered && wouldCreateCycle(variable)) {
            isOrdered = false;
            order = OrderList(source.nbRows());
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
    for (const Jacobian::Entry& entry : jacobian.row(row)) {
        const std::int32_t d = definitions.definitionOf(entry.index);
        if (d != none) use(d);
    }
}

void DefinitionGraph::use(std::int32_t d) {
    if (firstUsed == none || order.isBefore(d, firstUsed)) firstUsed = d;
    usedLandmarks |= landmarks.usedBy(d);
    reach(d);
}

void DefinitionGraph::reach(std::int32_t d) {
    std::uint32_t& reached = visits[index(d)].reachedFor;
    if (reached == nbRowsStarted) return;
    reached = nbRowsStarted;
    forward.open.push_back(d);
    std::push_heap(forward.open.begin(), forward.open.end(), laterForward());
}

bool DefinitionGraph::wouldCreateCycle(std::int32_t variable) {
    if (firstUsed == none) return false;
    if (reachedFor[index(variable)] == nbRowsStarted ||
        (usedLandmarks & landmarks.usersOf(variable)) != 0)
        return true;
    inQuestion = variable;
    ++nbSearches;
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
    if (nbFutileSteps < definitions.size() || landmarks.areAllPlaced()) return;
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
        backward.rest = definitions.rowsOf(definitions.variable(backward.expanded.back()));
        if (backward.rest.empty()) return false;
    }
    const std::int32_t u = definitions.definitionBy(backward.takeEntry());
    if (u == none) return false;
    Visit& visit = visits[index(u)];
    if (visit.dependentIn == nbSearches) return false;
    visit.dependentIn = nbSearches;
    if (isInFirstColumn && (lastDependent == none || order.isBefore(lastDependent, u)))
        lastDependent = u;
    // What stands in front of all that the row uses is not used by it.
    if (order.isBefore(u, firstUsed)) return false;
    backward.open.push_back(u);
    std::push_heap(backward.open.begin(), backward.open.end(), laterBackward());
    meetingPoint = u;
    return visit.reachedFor == nbRowsStarted;
}

/// One entry of a row. @return whether its variable is the one in question or depends on it.
bool DefinitionGraph::stepForward() {
    if (forward.rest.empty()) {
        std::pop_heap(forward.open.begin(), forward.open.end(), laterForward());
        forward.expanded.push_back(forward.open.back());
        forward.open.pop_back();
        forward.rest = definitions.used(forward.expanded.back());
        if (forward.rest.empty()) return false;
    }
    const std::int32_t w = forward.takeEntry();
    const std::int32_t d = definitions.definitionOf(w);
    if (d == none) {
        reachedFor[index(w)] = nbRowsStarted;
        meetingPoint = forward.expanded.back();
        return w == inQuestion;
    }
    reach(d);
    meetingPoint = d;
    return visits[index(d)].dependentIn == nbSearches;
}

void DefinitionGraph::define(std::int32_t variable) {
    const std::int32_t d = definitions.add(variable, currentRow);
    if (isOrdered) place(d);
    landmarks.learn(d, usedLandmarks);
    assert(!isOrdered ||
           (isInPlace(d) && areInPlace(forward.expanded) && areInPlace(backward.expanded)));
}

/// Is definition `d` in front of all that it uses and behind all that use it?
bool DefinitionGraph::isInPlace(std::int32_t d) const {
    const auto areInOrder = [this](std::int32_t user, std::int32_t used) {
        return user == none || used == none || user == used || order.isBefore(user, used);
    };
    const Jacobian::Entries usedByIt = definitions.used(d);
    const Jacobian::Entries rows = definitions.rowsOf(definitions.variable(d));
    return std::all_of(usedByIt.begin(), usedByIt.end(),
                       [&](const auto& entry) {
                           return areInOrder(d, definitions.definitionOf(entry.index));
                       }) &&
           std::all_of(rows.begin(), rows.end(), [&](const auto& entry) {
               return areInOrder(definitions.definitionBy(entry.index), d);
           });
}

bool DefinitionGraph::areInPlace(const std::vector<std::int32_t>& moved) const {
    return std::all_of(moved.begin(), moved.end(), [this](std::int32_t d) { return isInPlace(d); });
}

/// Places definition `d` behind all that depend on it and in front of all that it depends on.
void DefinitionGraph::place(std::int32_t d) {
    if (firstUsed == none)
        order.placeLast(d);
    else if (forward.isExhausted())
        placeBehindDependents(d);
    else
        placeBetweenSearches(d);
}

/// All that the row leads to is known and moves behind the last dependent, where it is not yet.
void DefinitionGraph::placeBehindDependents(std::int32_t d) {
    if (isInFirstColumn)
        order.placeLast(d);  // who the last dependent is has not come out
    else if (lastDependent == none)
        order.placeBefore(d, firstUsed);
    else
        order.placeAfter(d, lastDependent);
    std::int32_t previous = d;
    for (const std::int32_t w : forward.expanded) {
        if (order.isBefore(d, w)) continue;
        order.remove(w);
        order.placeAfter(w, previous);
        previous = w;
    }
}

/// What the searches have looked into stands in front of the first variable that the row leads to
/// and that is not looked into entirely: at first what depends on the new one, then that one,
/// then what it depends on.
void DefinitionGraph::placeBetweenSearches(std::int32_t d) {
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
    order.placeBefore(d, border);
    for (const std::int32_t w : used) {
        order.remove(w);
        order.placeBefore(w, border);
    }
}

}  // namespace vex
