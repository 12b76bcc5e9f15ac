#include "defvars/detection.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "double/host_double.hpp"
#include "double/instance_text.hpp"
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

/// Is there a way from row `row`, through definitions, to another row of variable `v`?
bool leadsTo(vex::ModelHandle nmo, const vex::DefinedVariables& defined, std::int32_t row,
             std::int32_t v, std::set<std::int32_t>& visited) {
    for (const Entry& entry : rowOf(nmo, row)) {
        const auto definition = defined.find(entry.index);
        if (definition == defined.end() || !visited.insert(entry.index).second) continue;
        for (const Entry& next : rowOf(nmo, definition->second)) {
            if (next.index == v) return true;
        }
        if (leadsTo(nmo, defined, definition->second, v, visited)) return true;
    }
    return false;
}

/// The search for defining equations as plainly as it can be told: one ordered set, one depth-first
/// walk through all definitions per question. Says nothing to the log.
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
            std::set<std::int32_t> visited;
            if (candidates.count(c) == 0 || chosen.nonlinear != 0 ||
                leadsTo(nmo, definedVariables, r, c, visited))
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

/// Random numbers in [0, n).
struct Dice {
    std::mt19937 engine;
    int operator()(int n) { return static_cast<int>(engine() % static_cast<unsigned>(n)); }
};

std::string randomInstance(Dice& dice, int nbVariables, int nbRows) {
    std::ostringstream text;
    const char* declarations[] = {"int", "bin", "semicont"};
    for (int j = 0; j < nbVariables; ++j) {
        text << (dice(8) > 0 ? "cont" : declarations[dice(3)]) << " x" << j;
        text << (dice(12) > 0 ? " in 0 1 ; " : " in 1 1 ; ");
    }
    const char* relations[] = {"<=", ">=", "=logic="};
    const int mostTerms = 2 + dice(6);
    for (int i = 0; i < nbRows; ++i) {
        text << "r" << i << " :";
        for (int k = 1 + dice(mostTerms); k > 0; --k) {
            text << (dice(2) > 0 ? " + " : " - ") << (dice(20) > 0 ? "2 x" : "1e-101 x")
                 << dice(nbVariables);
            if (dice(12) == 0) text << " * x" << dice(nbVariables);
        }
        text << ' ' << (dice(8) > 0 ? "=" : relations[dice(3)]) << " 1 ; ";
    }
    return text.str();
}

/// Pairs as an option file may name them: whether they make sense does not matter.
void addKnownPairs(Dice& dice, vex::ModelHandle nmo, vex::DefinedVariables& definedVariables,
                   vex::DefiningEquations& definingEquations) {
    for (int k = dice(2) > 0 ? 0 : dice(6); k > 0; --k) {
        const std::int32_t j = dice(vex::nmoN(nmo));
        const std::int32_t i = dice(vex::nmoM(nmo));
        if (vex::nmoGetVarTypeOne(nmo, j) != 0 || vex::nmoGetEquTypeOne(nmo, i) != 0 ||
            definedVariables.count(j) + definingEquations.count(i) != 0)
            continue;
        definedVariables[j] = i;
        definingEquations[i] = j;
    }
}

TEST(Detection, AgreesWithThePlainSearchOnRandomInstances) {
    doubles::bindHost();
    std::size_t nbDefined = 0;
    for (unsigned seed = 0; seed < 3000; ++seed) {
        Dice dice{std::mt19937(seed)};
        const int size = seed % 20 == 0 ? 60 : 8;
        const std::string instance = randomInstance(dice, 2 + dice(size), 1 + dice(2 * size));
        const norv::Environment environment;
        const norv::Model model = readInstance(instance, environment);
        const vex::ModelHandle nmo = model.handle();
        vex::nmoIndexBaseSet(nmo, 0);
        vex::DefinedVariables definedVariables;
        vex::DefiningEquations definingEquations;
        addKnownPairs(dice, nmo, definedVariables, definingEquations);
        vex::DefinedVariables plainVariables = definedVariables;
        vex::DefiningEquations plainEquations = definingEquations;
        vex::findDefiningEquations(nmo, definedVariables, definingEquations);
        findByReference(nmo, plainVariables, plainEquations);
        ASSERT_EQ(definedVariables, plainVariables) << "seed " << seed << ": " << instance;
        ASSERT_EQ(definingEquations, plainEquations);
        nbDefined += definedVariables.size();
    }
    EXPECT_GT(nbDefined, 3000U);
}

}  // namespace
