#include "defvars/definition_graph.hpp"

#include <algorithm>

namespace vex {

DefinitionGraph::DefinitionGraph(ModelHandle model, const DefinedVariables& known)
    : nmo(model),
      definingRow(index(nmoN(model)), none),
      definedVariable(index(nmoM(model)), none),
      order(nmoN(model)),
      reachedIn(index(nmoN(model)), 0),
      dependentIn(index(nmoN(model)), 0) {
    addKnown(known);
}

void DefinitionGraph::addKnown(const DefinedVariables& known) {
    for (const auto& [variable, equation] : known) {
        startRow(equation);
        forEachEntry(RowWalk(nmo, equation), [this](const JacobianEntry& entry) {
            if (isDefined(entry.index)) addDefinedVariable(entry.index);
        });
        if (isOrdered && wouldCreateCycle(variable)) {
            isOrdered = false;
            order = OrderList(static_cast<std::int32_t>(definingRow.size()));
        }
        define(variable);
    }
}

void DefinitionGraph::startRow(std::int32_t row) {
    currentRow = row;
    ++nbRowsStarted;
    firstUsed = none;
    doneSide = Side::neither;
    forward.open.clear();
    forward.expanded.clear();
    forward.walk = RowWalk();
}

void DefinitionGraph::addDefinedVariable(std::int32_t variable) {
    if (firstUsed == none || order.isBefore(variable, firstUsed)) firstUsed = variable;
    open(variable);
}

void DefinitionGraph::open(std::int32_t u) {
    if (isReached(u)) return;
    reachedIn[index(u)] = nbRowsStarted;
    if (!isDefined(u)) return;
    forward.open.push_back(u);
    std::push_heap(forward.open.begin(), forward.open.end(),
                   [this](std::int32_t a, std::int32_t b) { return order.isBefore(b, a); });
}

bool DefinitionGraph::wouldCreateCycle(std::int32_t variable) {
    doneSide = Side::neither;
    if (firstUsed == none) return false;
    if (isReached(variable)) return true;
    ++nbSearches;
    dependentIn[index(variable)] = nbSearches;
    backward.found.clear();
    backward.nbExpanded = 0;
    backward.walk = ColumnWalk(nmo, variable);
    backward.isInFirstColumn = true;
    backward.lastDependent = none;
    return searchesMeet();
}

bool DefinitionGraph::searchesMeet() {
    for (;;) {
        if (backwardIsDone()) {
            doneSide = Side::backward;
            return false;
        }
        if (forwardIsDone()) {
            doneSide = Side::forward;
            return false;
        }
        if (stepBackward() || stepForward()) return true;
    }
}

bool DefinitionGraph::backwardIsDone() {
    if (!backward.walk.isAtEnd()) return false;
    backward.isInFirstColumn = false;
    if (backward.nbExpanded == backward.found.size()) return true;
    backward.walk = ColumnWalk(nmo, backward.found[backward.nbExpanded++]);
    return false;
}

/// One entry of a column. @return whether it belongs to a variable that the row depends on.
bool DefinitionGraph::stepBackward() {
    const std::int32_t i = backward.walk.next().index;
    const std::int32_t u = i < 0 ? none : definedVariable[index(i)];
    if (u == none || isDependent(u)) return false;
    dependentIn[index(u)] = nbSearches;
    if (backward.isInFirstColumn &&
        (backward.lastDependent == none || order.isBefore(backward.lastDependent, u)))
        backward.lastDependent = u;
    // What stands in front of all that the row uses is not used by it.
    if (isOrdered && order.isBefore(u, firstUsed)) return false;
    backward.found.push_back(u);
    return isReached(u);
}

bool DefinitionGraph::forwardIsDone() {
    if (!forward.walk.isAtEnd()) return false;
    if (forward.open.empty()) return true;
    // What stands behind all that use the variable does not lead to it.
    const std::int32_t u = forward.open.front();
    if (isOrdered && !backward.isInFirstColumn && order.isBefore(backward.lastDependent, u))
        return true;
    std::pop_heap(forward.open.begin(), forward.open.end(),
                  [this](std::int32_t a, std::int32_t b) { return order.isBefore(b, a); });
    forward.open.pop_back();
    forward.expanded.push_back(u);
    forward.walk = RowWalk(nmo, rowDefining(u));
    return false;
}

/// One entry of a row. @return whether its variable depends on the one in question.
bool DefinitionGraph::stepForward() {
    const std::int32_t w = forward.walk.next().index;
    if (w < 0) return false;
    open(w);
    return isDependent(w);
}

void DefinitionGraph::define(std::int32_t variable) {
    if (isOrdered) place(variable);
    definingRow[index(variable)] = currentRow;
    definedVariable[index(currentRow)] = variable;
}

/// Places `variable` behind all that depend on it and in front of all that it depends on.
void DefinitionGraph::place(std::int32_t variable) {
    const auto inOrder = [this](std::int32_t a, std::int32_t b) { return order.isBefore(a, b); };
    if (doneSide == Side::neither) {
        order.placeLast(variable);
    } else if (doneSide == Side::backward) {
        std::sort(backward.found.begin(), backward.found.end(), inOrder);
        for (const std::int32_t u : backward.found) {
            order.remove(u);
            order.placeBefore(u, firstUsed);
        }
        order.placeBefore(variable, firstUsed);
    } else {
        // Without the whole column of the variable nobody knows who uses it: behind all of them.
        const bool knowsLast = !backward.isInFirstColumn;
        const std::int32_t lastDependent = backward.lastDependent;
        std::vector<std::int32_t>& moved = forward.expanded;
        if (knowsLast) {
            moved.erase(
                std::remove_if(moved.begin(), moved.end(),
                               [&](std::int32_t w) { return order.isBefore(lastDependent, w); }),
                moved.end());
        }
        std::sort(moved.begin(), moved.end(), inOrder);
        if (knowsLast)
            order.placeAfter(variable, lastDependent);
        else
            order.placeLast(variable);
        std::int32_t previous = variable;
        for (const std::int32_t w : moved) {
            order.remove(w);
            order.placeAfter(w, previous);
            previous = w;
        }
    }
}

}  // namespace vex
