#include "defvars/detection.hpp"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>

#include "defvars/reference_detection.hpp"
#include "double/host_double.hpp"
#include "double/instance_text.hpp"
#include "host/operations.hpp"

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
    doubles::bindHost();
    int nbCircular = 0;
    int nbDefined = 0;
    for (unsigned seed = 0; seed < 2000; ++seed) {
        Dice dice(seed);
        const int size = seed % 20 == 0 ? 60 : 8;
        const std::string instance = randomInstance(dice, 2 + dice(size), 1 + dice(size));
        const norv::Environment environment;
        const norv::Model model = readInstance(instance, environment);
        const vex::ModelHandle nmo = model.handle();
        vex::nmoIndexBaseSet(nmo, 0);
        Search search = knownPairs(dice, nmo);
        Search reference = search;
        nbCircular += isCircular(nmo, search.definedVariables) ? 1 : 0;
        vex::findDefiningEquations(nmo, search.definedVariables, search.definingEquations);
        findByReference(nmo, reference.definedVariables, reference.definingEquations);
        ASSERT_EQ(textOf(model, search.definedVariables), textOf(model, reference.definedVariables))
            << "seed " << seed << ": " << instance;
        ASSERT_EQ(search, reference);
        nbDefined += static_cast<int>(search.definedVariables.size());
    }
    EXPECT_GT(nbCircular, 30);
    EXPECT_GT(nbDefined, 3000);
}

}  // namespace
