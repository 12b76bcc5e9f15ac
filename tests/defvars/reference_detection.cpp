#include "defvars/reference_detection.hpp"

#include <cmath>
#include <set>
#include <tuple>
#include <vector>

#include "host/operations.hpp"

namespace {

struct Entry {
    std::int32_t index, nonlinear;
    double value;
    [[nodiscard]] bool counts() const { return nonlinear == 0 && std::fabs(value) > 1e-100; }
};

template <class Operation>
std::vector<Entry> entriesOf(Operation& operation, vex::ModelHandle nmo, std::int32_t line) {
    std::vector<Entry> entries;
    void* cursor = nullptr;
    do {
        Entry e{-1, 0, 0.0};
        operation(nmo, line, &cursor, &e.value, &e.index, &e.nonlinear);
        if (e.index < 0) break;
        entries.push_back(e);
    } while (cursor != nullptr);
    return entries;
}
std::vector<Entry> rowOf(vex::ModelHandle nmo, std::int32_t i) {
    return entriesOf(vex::nmoGetRowJacInfoOne, nmo, i);
}
std::vector<Entry> columnOf(vex::ModelHandle nmo, std::int32_t j) {
    return entriesOf(vex::nmoGetColJacInfoOne, nmo, j);
}

bool dependsOnVariable(vex::ModelHandle nmo, const vex::DefinedVariables& defined, std::int32_t v,
                       std::int32_t e, std::set<std::int32_t>& visited) {
    for (const Entry& entry : rowOf(nmo, e)) {
        if (entry.index == v) return true;
        const auto definition = defined.find(entry.index);
        if (definition != defined.end() && visited.insert(entry.index).second &&
            dependsOnVariable(nmo, defined, v, definition->second, visited))
            return true;
    }
    return false;
}

bool wouldCreateCycle(vex::ModelHandle nmo, const vex::DefinedVariables& defined, std::int32_t v,
                      std::int32_t r) {
    std::set<std::int32_t> visited;
    for (const Entry& entry : rowOf(nmo, r)) {
        const auto definition = defined.find(entry.index);
        if (definition != defined.end() && visited.insert(entry.index).second &&
            dependsOnVariable(nmo, defined, v, definition->second, visited))
            return true;
    }
    return false;
}

}  // namespace

void findByReference(vex::ModelHandle nmo, vex::DefinedVariables& definedVariables,
                     vex::DefiningEquations& definingEquations) {
    struct Counts {
        std::int32_t total = 0, linear = 0;
    };
    std::vector<Counts> counts(static_cast<std::size_t>(vex::nmoM(nmo)));
    const auto of = [&](std::int32_t i) -> Counts& { return counts[static_cast<std::size_t>(i)]; };
    const auto isEquality = [&](std::int32_t i) { return vex::nmoGetEquTypeOne(nmo, i) == 0; };
    std::set<std::int32_t> candidates;
    for (std::int32_t v = 0; v < vex::nmoN(nmo); ++v) {
        if (vex::nmoGetVarLowerOne(nmo, v) == vex::nmoGetVarUpperOne(nmo, v) ||
            vex::nmoGetVarTypeOne(nmo, v) != 0 || definedVariables.count(v) != 0)
            continue;
        for (const Entry& e : columnOf(nmo, v)) {
            if (e.counts() && isEquality(e.index)) candidates.insert(v);
        }
        if (candidates.count(v) == 0) continue;
        for (const Entry& e : columnOf(nmo, v)) {
            ++of(e.index).total;
            if (e.counts()) ++of(e.index).linear;
        }
    }
    using Place = std::tuple<std::int32_t, std::int32_t, std::int32_t>;
    std::set<Place> pending;
    const auto place = [&](std::int32_t i) { return Place{of(i).total, of(i).linear, i}; };
    for (std::int32_t i = 0; i < vex::nmoM(nmo); ++i) {
        if (of(i).linear > 0 && isEquality(i) && definingEquations.count(i) == 0)
            pending.insert(place(i));
    }
    while (!pending.empty()) {
        const std::int32_t r = std::get<2>(*pending.begin());
        pending.erase(pending.begin());
        for (const Entry& chosen : rowOf(nmo, r)) {
            const std::int32_t c = chosen.index;
            if (candidates.count(c) == 0 || chosen.nonlinear != 0 ||
                wouldCreateCycle(nmo, definedVariables, c, r))
                continue;
            candidates.erase(c);
            definedVariables[c] = r;
            definingEquations[r] = c;
            for (const Entry& e : columnOf(nmo, c)) {
                if (pending.erase(place(e.index)) == 0) continue;
                --of(e.index).total;
                if (e.counts()) --of(e.index).linear;
                if (of(e.index).linear > 0) pending.insert(place(e.index));
            }
            break;
        }
    }
}

bool isCircular(vex::ModelHandle nmo, const vex::DefinedVariables& definedVariables) {
    for (const auto& [v, r] : definedVariables) {
        vex::DefinedVariables others = definedVariables;
        others.erase(v);
        if (wouldCreateCycle(nmo, others, v, r)) return true;
    }
    return false;
}
