#include "defvars/landmarks.hpp"

namespace vex {

void Landmarks::place(std::int32_t d) {
    if (used.empty()) {
        used.assign(nbRows, 0);
        users.assign(nbVariables, 0);
    }
    const Set landmark = Set{1} << nbPlaced++;
    add(used, d, landmark);
    tellUsers();
    add(users, definitions.variable(d), landmark);
    tellUsed();
}

void Landmarks::learn(std::int32_t d, Set usedByRow) {
    if (nbPlaced == 0) return;
    add(used, d, usedByRow);
    tellUsers();
    const std::int32_t variable = definitions.variable(d);
    if (usersOf(variable) != 0) learned.push_back(variable);
    tellUsed();
}

/// Enlarges the set of `k`, whose neighbours are then to be told.
void Landmarks::add(std::vector<Set>& sets, std::int32_t k, Set found) {
    Set& known = sets[static_cast<std::size_t>(k)];
    if ((found & ~known) == 0) return;
    known |= found;
    learned.push_back(k);
}

void Landmarks::tellUsers() {
    while (!learned.empty()) {
        const std::int32_t d = learned.back();
        learned.pop_back();
        for (const Jacobian::Entry& entry : definitions.rowsOf(definitions.variable(d))) {
            const std::int32_t user = definitions.definitionBy(entry.index);
            if (user != Definitions::none) add(used, user, usedBy(d));
        }
    }
}

void Landmarks::tellUsed() {
    while (!learned.empty()) {
        const std::int32_t variable = learned.back();
        learned.pop_back();
        const std::int32_t d = definitions.definitionOf(variable);
        if (d == Definitions::none) continue;
        for (const Jacobian::Entry& entry : definitions.used(d))
            add(users, entry.index, usersOf(variable));
    }
}

}  // namespace vex
