#include "defvars/landmarks.hpp"

namespace vex {

void Landmarks::place(std::int32_t variable) {
    if (used.empty()) {
        used.assign(nbVariables, 0);
        users.assign(nbVariables, 0);
    }
    const Set landmark = Set{1} << nbPlaced++;
    add(used, variable, landmark);
    tellUsers();
    add(users, variable, landmark);
    tellUsed();
}

void Landmarks::learn(std::int32_t variable, Set usedByRow) {
    if (nbPlaced == 0) return;
    add(used, variable, usedByRow);
    tellUsers();
    if (usersOf(variable) != 0) learned.push_back(variable);
    tellUsed();
}

/// Enlarges the set of `variable`, whose neighbours are then to be told.
void Landmarks::add(std::vector<Set>& sets, std::int32_t variable, Set found) {
    Set& known = sets[static_cast<std::size_t>(variable)];
    if ((found & ~known) == 0) return;
    known |= found;
    learned.push_back(variable);
}

void Landmarks::tellUsers() {
    while (!learned.empty()) {
        const std::int32_t variable = learned.back();
        learned.pop_back();
        for (const Equalities::Entry& entry : definitions.rowsOf(variable)) {
            const std::int32_t user = definitions.variableDefinedBy(entry.index);
            if (user != Definitions::none) add(used, user, usedBy(variable));
        }
    }
}

void Landmarks::tellUsed() {
    while (!learned.empty()) {
        const std::int32_t variable = learned.back();
        learned.pop_back();
        if (!definitions.isDefined(variable)) continue;
        for (const Equalities::Entry& entry : definitions.used(variable))
            add(users, entry.index, usersOf(variable));
    }
}

}  // namespace vex
