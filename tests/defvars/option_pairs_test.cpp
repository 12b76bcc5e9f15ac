#include "defvars/option_pairs.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "host/operations.hpp"
#include "translate/link_fixture.hpp"

namespace {

constexpr const char* instance =
    "cont x ; cont y ; cont f in 3 3 ; int n ; "
    "a : x + y = 1 ; b : x + y + f = 2 ; c : x - y <= 3 ; d : x + n = 4";

const std::string unknown = "Error parsing defined variables information.\n";

std::string accepted(int n) {
    return "Options file informs about equations that define variables... " + std::to_string(n) +
           " many.\n";
}

const std::string notEqual =
    "WARNING: Cannot define variable n via equation c: Equation need to be of equality type "
    "(=e=).\n";

TEST(OptionPairs, AreTakenOverOrWarnedOf) {
    const struct {
        const char* what;
        std::vector<std::string> pairs;
        std::string log;
        vex::DefinedVariables definedVariables = {};
    } cases[] = {
        {"none", {}, ""},
        {"three, of which one is no equality",
         {"x a", "n c", "f d"},
         notEqual + accepted(2),
         {{0, 0}, {2, 3}}},
        {"a discrete variable",
         {"n d", "x d"},
         "WARNING: Variable n cannot be defined variable: Variable type need to be continuous.\n" +
             accepted(1),
         {{0, 3}}},
        {"a second equation",
         {"x a", "x b"},
         "WARNING: Variable x already defined by equation a, treating second definition via "
         "equation b as constraint.\n" +
             accepted(1),
         {{0, 0}}},
        {"a second variable",
         {"x a", "y a"},
         "WARNING: Equation a already defines variable x, treating y as normal variable.\n" +
             accepted(1),
         {{0, 0}}},
        {"more pairs than rows",
         {"x a", "y b", "n c", "n c", "n c"},
         notEqual + notEqual + notEqual + accepted(2),
         {{0, 0}, {1, 1}}},
        {"a name that the model does not have",
         {"x a", "z b"},
         "test: defvar: the model has no variable \"z\".\n" + unknown},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        std::vector<std::string> settings;
        for (const std::string& pair : c.pairs) settings.push_back("defvar " + pair);
        LinkFixture fixture(instance, settings);
        vex::nmoIndexBaseSet(fixture.link.nmo, 0);
        vex::DefinedVariables definedVariables;
        vex::DefiningEquations definingEquations;
        EXPECT_EQ(vex::readDefinedVariableOptions(fixture.link.nmo, fixture.link.opt,
                                                  definedVariables, definingEquations),
                  c.log.find(unknown) == std::string::npos);
        EXPECT_EQ(fixture.log, c.log);
        EXPECT_EQ(definedVariables, c.definedVariables);
        EXPECT_EQ(definingEquations.size(), definedVariables.size());
        for (const auto& [variable, row] : definedVariables)
            EXPECT_EQ(definingEquations[row], variable);
        EXPECT_TRUE(vex::readDefinedVariableOptions(fixture.link.nmo, nullptr, definedVariables,
                                                    definingEquations));
    }
}

/// What a host delivers that does not keep to the model.
vex::DefinedVariables delivered;
std::int32_t deliver(vex::ModelHandle, std::int32_t, vex::OptionHandle, std::int32_t,
                     std::int32_t* nbPairs, std::int32_t* rows, std::int32_t* variables,
                     std::int32_t*) {
    *nbPairs = 0;
    for (const auto& [variable, row] : delivered) {
        variables[*nbPairs] = variable;
        rows[(*nbPairs)++] = row;
    }
    return 0;
}

TEST(OptionPairs, OutsideTheModelAreAnErrorOfSetup) {
    LinkFixture fixture(instance, {"defvar x a"});
    const SlotOverride pairs(vex::nmoGetVarEquMap, "nmoGetVarEquMap", &deliver);
    for (const vex::DefinedVariables& each :
         {vex::DefinedVariables{{0, 0}, {4, 1}}, {{0, 0}, {1, 4}}, {{-1, 0}}, {{0, -1}}}) {
        delivered = each;
        fixture.log.clear();
        try {
            fixture.setUp();
            ADD_FAILURE() << "no exception";
        } catch (const localsolver::LSException& error) {
            EXPECT_STREQ(error.what(),
                         "Error processing defined variables information from options file.");
        }
        EXPECT_EQ(fixture.log, unknown);
        EXPECT_TRUE(fixture.link.definedVariables.empty());
    }
}

}  // namespace
