#include "defvars/detection.hpp"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>

#include "defvars/reference_detection.hpp"
#include "host/operations.hpp"
#include "translate/link_fixture.hpp"

namespace {

/// The two maps and how they came about.
struct Search {
    vex::DefinedVariables definedVariables;
    vex::DefiningEquations definingEquations;

    void add(std::int32_t variable, std::int32_t row) {
        definedVariables[variable] = row;
        definingEquations[row] = variable;
    }
    bool operator==(const Search&) const = default;
};

std::string textOf(const norv::Model& model, const vex::DefinedVariables& definedVariables) {
    std::string text;
    for (const auto& [variable, row] : definedVariables) {
        text += (text.empty() ? "" : " ") + model.variableName(variable) + ":" + model.rowName(row);
    }
    return text;
}

TEST(Detection, PairsVariablesWithEquations) {
    const struct {
        const char* what;
        const char* instance;
        const char* pairs;
        std::vector<std::pair<std::int32_t, std::int32_t>> known = {};
    } cases[] = {
        {"no rows", "min x", ""},
        {"an equality, not an inequality", "a : x + y <= 1 ; b : y + x = 1", "x:b"},
        {"a Boolean equality is none", "a : x =logic= 1", ""},
        {"only continuous variables", "int i ; bin b ; semicont s ; a : i + b + s = 1", ""},
        {"no fixed variables", "cont x in 3 3 ; cont y in 3 4 ; a : x + y = 1", "y:a"},
        {"neither nonlinear nor tiny",
         "a : x * x + x = 1 ; b : 1e-100 y = 1 ; c : z + curved(z) = 1 ; d : 1.1e-100 w = 1",
         "w:d"},
        {"a tiny coefficient is good enough where the variable is chosen",
         "a : x + y = 1 ; b : x + z = 2 ; c : 1e-101 y + z = 3", "x:a y:c"},
        {"the row with one candidate takes what is shared",
         "cont f in 1 1 ; a : x + y = 1 ; b : x + f = 2", "x:b y:a"},
        {"fewer linear entries first", "a : x + y = 1 ; b : x + y + y * y = 1 ; c : y + z = 2",
         "x:b y:c"},
        {"free rows do not count", "a : x + y = 1 ; b : y + z = 3 ; f : x =free= 1", "x:a y:b"},
        {"no cycle through definitions", "a : x + y = 1 ; b : x + y = 2 ; c : y + z = 3",
         "x:a y:c"},
        {"known pairs stay and are not counted",
         "a : x + y = 1 ; b : x + y = 2 ; c : z + x = 3",
         "x:c y:a",
         {{1, 0}}},
        {"circular known pairs",
         "a : x + y = 1 ; b : x + y = 2 ; c : z + x = 3",
         "x:a y:b z:c",
         {{0, 0}, {1, 1}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        LinkFixture fixture(c.instance);
        vex::nmoIndexBaseSet(fixture.link.nmo, 0);
        vex::nmoSetNRowPerm(fixture.link.nmo);
        Search search;
        for (const auto& [variable, row] : c.known) search.add(variable, row);
        vex::findDefiningEquations(fixture.link.nmo, search.definedVariables,
                                   search.definingEquations);
        EXPECT_EQ(textOf(fixture.model, search.definedVariables), c.pairs);
        const std::size_t nbFound = search.definedVariables.size() - c.known.size();
        EXPECT_EQ(fixture.log, "Searching for equations that define variables... found " +
                                   std::to_string(nbFound) + "\n");
    }
}

/// Random numbers in [0, n).
class Dice {
public:
    explicit Dice(unsigned seed) : engine(seed) {}
    int operator()(int n) { return static_cast<int>(engine() % static_cast<unsigned>(n)); }

private:
    std::mt19937 engine;
};

std::string randomInstance(Dice& dice, int nbVariables, int nbRows) {
    std::ostringstream text;
    const char* declarations[] = {"int", "bin", "semicont"};
    for (int j = 0; j < nbVariables; ++j) {
        text << (dice(8) > 0 ? "cont" : declarations[dice(3)]) << " x" << j;
        text << (dice(12) > 0 ? " in 0 1 ; " : " in 1 1 ; ");
    }
    const char* relations[] = {"<=", ">=", "=logic="};
    const int mostTerms = 2 + dice(3);
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
Search knownPairs(Dice& dice, vex::ModelHandle nmo) {
    Search known;
    for (int k = dice(2) > 0 ? 0 : dice(6); k > 0; --k) {
        const std::int32_t j = dice(vex::nmoN(nmo));
        const std::int32_t i = dice(vex::nmoM(nmo));
        if (vex::nmoGetVarTypeOne(nmo, j) == 0 && vex::nmoGetEquTypeOne(nmo, i) == 0 &&
            known.definedVariables.count(j) + known.definingEquations.count(i) == 0)
            known.add(j, i);
    }
    return known;
}

TEST(Detection, AgreesWithThePlainSearchOnRandomInstances) {
    int nbCircular = 0;
    int nbDefined = 0;
    for (unsigned seed = 0; seed < 6000; ++seed) {
        Dice dice(seed);
        const int size = seed % 20 == 0 ? 60 : 8;
        const std::string instance = randomInstance(dice, 2 + dice(size), 1 + dice(size));
        LinkFixture fixture(instance);
        const vex::ModelHandle nmo = fixture.link.nmo;
        vex::nmoIndexBaseSet(nmo, 0);
        Search search = knownPairs(dice, nmo);
        Search reference = search;
        nbCircular += isCircular(nmo, search.definedVariables) ? 1 : 0;
        vex::findDefiningEquations(nmo, search.definedVariables, search.definingEquations);
        findByReference(nmo, reference.definedVariables, reference.definingEquations);
        ASSERT_EQ(textOf(fixture.model, search.definedVariables),
                  textOf(fixture.model, reference.definedVariables))
            << "seed " << seed << ": " << instance;
        ASSERT_EQ(search, reference);
        nbDefined += static_cast<int>(search.definedVariables.size());
    }
    EXPECT_GT(nbCircular, 100);
    EXPECT_GT(nbDefined, 10000);
}

}  // namespace
