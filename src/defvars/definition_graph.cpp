#include "defvars/definition_graph.hpp"

#include <algorithm>
#include <cassert>

namespace vex {

DefinitionGraph::DefinitionGraph(const Jacobian& source, const DefinedVariables& known)
    : jacobian_(source),
      definitions_(source),
      order_(source.nbRows()),
      landmarks_(definitions_, source),
      visits_(index(source.nbRows())),
      reachedFor_(index(source.nbVariables()), 0) {
    for (const auto& [variable, row] : known) {
        startRow(row);
        if (isOrdered_ && wouldCreateCycle(variable)) {
            isOrdered_ = false;
            order_ = OrderList(source.nbRows());
        }
        define(variable);
    }
}

void DefinitionGraph::startRow(std::int32_t row) {
    currentRow_ = row;
    ++nbRowsStarted_;
    firstUsed_ = none;
    usedLandmarks_ = 0;
    forward_.open.clear();
    forward_.expanded.clear();
    forward_.rest = {};
    for (const Jacobian::Entry& entry : jacobian_.row(row)) {
        const std::int32_t d = definitions_.definitionOf(entry.index);
        if (d != none) use(d);
    }
}

void DefinitionGraph::use(std::int32_t d) {
    if (firstUsed_ == none || order_.isBefore(d, firstUsed_)) firstUsed_ = d;
    usedLandmarks_ |= landmarks_.usedBy(d);
    reach(d);
}

void DefinitionGraph::reach(std::int32_t d) {
    std::uint32_t& reached = visits_[index(d)].reachedFor;
    if (reached == nbRowsStarted_) return;
    reached = nbRowsStarted_;
    forward_.open.push_back(d);
    std::push_heap(forward_.open.begin(), forward_.open.end(), laterForward());
}

bool DefinitionGraph::wouldCreateCycle(std::int32_t variable) {
    if (firstUsed_ == none) return false;
    if (reachedFor_[index(variable)] == nbRowsStarted_ ||
        (usedLandmarks_ & landmarks_.usersOf(variable)) != 0)
        return true;
    inQuestion_ = variable;
    ++nbSearches_;
    backward_.open.clear();
    backward_.expanded.clear();
    backward_.rest = definitions_.rowsOf(variable);
    isInFirstColumn_ = true;
    lastDependent_ = none;
    return searchesMeet();
}

bool DefinitionGraph::searchesMeet() {
    for (std::int64_t nbSteps = 1;; ++nbSteps) {
        if (isInFirstColumn_ && backward_.rest.empty()) isInFirstColumn_ = false;
        if (backward_.isExhausted() || forward_.isExhausted() || searchesHavePassed()) return false;
        if (stepBackward() || stepForward()) {
            learnFromMeeting(nbSteps);
            return true;
        }
    }
}

/// Searches that have cost as much as a walk through everything pay for a landmark.
void DefinitionGraph::learnFromMeeting(std::int64_t nbSteps) {
    nbFutileSteps_ += nbSteps;
    if (nbFutileSteps_ < definitions_.size() || landmarks_.areAllPlaced()) return;
    landmarks_.place(meetingPoint_);
    nbFutileSteps_ = 0;
}

/// Is everything that leads to the variable and is not looked into in front of everything that the
/// row leads to and is not looked into?
bool DefinitionGraph::searchesHavePassed() const {
    return forward_.rest.empty() && backward_.rest.empty() &&
           order_.isBefore(backward_.open.front(), forward_.open.front());
}

/// One entry of a column. @return whether it belongs to a variable that the row depends on.
bool DefinitionGraph::stepBackward() {
    if (backward_.rest.empty()) {
        std::pop_heap(backward_.open.begin(), backward_.open.end(), laterBackward());
        backward_.expanded.push_back(backward_.open.back());
        backward_.open.pop_back();
        backward_.rest = definitions_.rowsOf(definitions_.variable(backward_.expanded.back()));
        if (backward_.rest.empty()) return false;
    }
    const std::int32_t u = definitions_.definitionBy(backward_.takeEntry());
    if (u == none) return false;
    Visit& visit = visits_[index(u)];
    if (visit.dependentIn == nbSearches_) return false;
    visit.dependentIn = nbSearches_;
    if (isInFirstColumn_ && (lastDependent_ == none || order_.isBefore(lastDependent_, u)))
        lastDependent_ = u;
    // What stands in front of all that the row uses is not used by it.
    if (order_.isBefore(u, firstUsed_)) return false;
    backward_.open.push_back(u);
    std::push_heap(backward_.open.begin(), backward_.open.end(), laterBackward());
    meetingPoint_ = u;
    return visit.reachedFor == nbRowsStarted_;
}

/// One entry of a row. @return whether its variable is the one in question or depends on it.
bool DefinitionGraph::stepForward() {
    if (forward_.rest.empty()) {
        std::pop_heap(forward_.open.begin(), forward_.open.end(), laterForward());
        forward_.expanded.push_back(forward_.open.back());
        forward_.open.pop_back();
        forward_.rest = definitions_.used(forward_.expanded.back());
        if (forward_.rest.empty()) return false;
    }
    const std::int32_t w = forward_.takeEntry();
    const std::int32_t d = definitions_.definitionOf(w);
    if (d == none) {
        reachedFor_[index(w)] = nbRowsStarted_;
        meetingPoint_ = forward_.expanded.back();
        return w == inQuestion_;
    }
    reach(d);
    meetingPoint_ = d;
    return visits_[index(d)].dependentIn == nbSearches_;
}

void DefinitionGraph::define(std::int32_t variable) {
    const std::int32_t d = definitions_.add(variable, currentRow_);
    if (isOrdered_) place(d);
    landmarks_.learn(d, usedLandmarks_);
    assert(!isOrdered_ ||
           (isInPlace(d) && areInPlace(forward_.expanded) && areInPlace(backward_.expanded)));
}

/// Is definition `d` in front of all that it uses and behind all that use it?
bool DefinitionGraph::isInPlace(std::int32_t d) const {
    const auto areInOrder = [this](std::int32_t user, std::int32_t used) {
        return user == none || used == none || user == used || order_.isBefore(user, used);
    };
    const Jacobian::Entries usedByIt = definitions_.used(d);
    const Jacobian::Entries rows = definitions_.rowsOf(definitions_.variable(d));
    return std::all_of(usedByIt.begin(), usedByIt.end(),
                       [&](const auto& entry) {
                           return areInOrder(d, definitions_.definitionOf(entry.index));
                       }) &&
           std::all_of(rows.begin(), rows.end(), [&](const auto& entry) {
               return areInOrder(definitions_.definitionBy(entry.index), d);
           });
}

bool DefinitionGraph::areInPlace(const std::vector<std::int32_t>& moved) const {
    return std::all_of(moved.begin(), moved.end(), [this](std::int32_t d) { return isInPlace(d); });
}

/// Places definition `d` behind all that depend on it and in front of all that it depends on.
void DefinitionGraph::place(std::int32_t d) {
    if (firstUsed_ == none)
        order_.placeLast(d);
    else if (forward_.isExhausted())
        placeBehindDependents(d);
    else
        placeBetweenSearches(d);
}

/// All that the row leads to is known and moves behind the last dependent, where it is not yet.
void DefinitionGraph::placeBehindDependents(std::int32_t d) {
    if (isInFirstColumn_)
        order_.placeLast(d);  // who the last dependent is has not come out
    else if (lastDependent_ == none)
        order_.placeBefore(d, firstUsed_);
    else
        order_.placeAfter(d, lastDependent_);
    std::int32_t previous = d;
    for (const std::int32_t w : forward_.expanded) {
        if (order_.isBefore(d, w)) continue;
        order_.remove(w);
        order_.placeAfter(w, previous);
        previous = w;
    }
}

/// What the searches have looked into stands in front of the first variable that the row leads to
/// and that is not looked into entirely: at first what depends on the new one, then that one,
/// then what it depends on.
void DefinitionGraph::placeBetweenSearches(std::int32_t d) {
    std::vector<std::int32_t>& used = forward_.expanded;
    std::int32_t border = forward_.open.empty() ? none : forward_.open.front();
    if (!forward_.rest.empty()) {
        border = used.back();
        used.pop_back();
    }
    // Expanded from the end of the list on.
    std::vector<std::int32_t>& dependents = backward_.expanded;
    std::reverse(dependents.begin(), dependents.end());
    for (const std::int32_t u : dependents) {
        if (order_.isBefore(u, border)) continue;
        order_.remove(u);
        order_.placeBefore(u, border);
    }
    order_.placeBefore(d, border);
    for (const std::int32_t w : used) {
        order_.remove(w);
        order_.placeBefore(w, border);
    }
}

}  // namespace vex
