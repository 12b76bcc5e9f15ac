#include "defvars/landmarks.hpp"

namespace vex {

void Landmarks::place(std::int32_t d) {
    if (used_.empty()) {
        used_.assign(nbRows_, 0);
        users_.assign(nbVariables_, 0);
    }
    const Set landmark = Set{1} << nbPlaced_++;
    add(used_, d, landmark);
    tellUsers();
    add(users_, definitions_.variable(d), landmark);
    tellUsed();
}

void Landmarks::learn(std::int32_t d, Set usedByRow) {
    if (nbPlaced_ == 0) return;
    add(used_, d, usedByRow);
    tellUsers();
    const std::int32_t variable = definitions_.variable(d);
    if (usersOf(variable) != 0) learned_.push_back(variable);
    tellUsed();
}

/// Enlarges the set of `k`, whose neighbours are then to be told.
void Landmarks::add(std::vector<Set>& sets, std::int32_t k, Set found) {
    Set& known = sets[static_cast<std::size_t>(k)];
    if ((found & ~known) == 0) return;
    known |= found;
    learned_.push_back(k);
}

void Landmarks::tellUsers() {
    while (!learned_.empty()) {
        const std::int32_t d = learned_.back();
        learned_.pop_back();
        for (const Jacobian::Entry& entry : definitions_.rowsOf(definitions_.variable(d))) {
            const std::int32_t user = definitions_.definitionBy(entry.index);
            if (user != Definitions::none) add(used_, user, usedBy(d));
        }
    }
}

void Landmarks::tellUsed() {
    while (!learned_.empty()) {
        const std::int32_t variable = learned_.back();
        learned_.pop_back();
        const std::int32_t d = definitions_.definitionOf(variable);
        if (d == Definitions::none) continue;
        for (const Jacobian::Entry& entry : definitions_.used(d))
            add(users_, entry.index, usersOf(variable));
    }
}

}  // namespace vex
