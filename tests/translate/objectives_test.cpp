#include <gtest/gtest.h>

#include <cmath>

#include "host/operations.hpp"
#include "translate/link_fixture.hpp"

namespace {

/// The objectives in their order, as "min x" or "max x".
std::string objectivesOf(const LinkFixture& fixture) {
    ls_solver* solver = fixture.link.solver->getHandle();
    std::string text;
    for (int k = 0; k < ls_nb_objectives(solver); ++k) {
        text += (text.empty() ? "" : ", ");
        text += ls_get_objective_direction(solver, k) == LS_MINIMIZE ? "min " : "max ";
        text += fixture.typedText({solver, ls_get_objective(solver, k)});
    }
    return text;
}

TEST(HierarchicalObjectives, RunFromTheLargestCoefficientDown) {
    const std::pair<const char*, const char*> cases[] = {
        {"min 10 y + 1000 x - z ; c1 : x + y + z >= 1", "min x, min y, max z"},
        {"cont a ; cont b ; max 5 a - 5 b", "min b, max a"},
        {"min 3 x + 7", "min x"},
        {"min 0", "min sum()"},
    };
    for (const auto& [instance, expected] : cases) {
        SCOPED_TRACE(instance);
        LinkFixture fixture(instance, {"hierarchicalobj 1"});
        fixture.setUp();
        EXPECT_EQ(objectivesOf(fixture), expected);
        EXPECT_EQ(fixture.link.nbObjectives,
                  static_cast<std::int32_t>(fixture.link.objectives.size()));
        EXPECT_EQ(fixture.link.nbObjectives, ls_nb_objectives(fixture.link.solver->getHandle()));
    }
}

TEST(HierarchicalObjectives, EndWithWhatIsNotANumberAndMinimiseIt) {
    for (const auto& [instance, expected] : {std::pair("min x + y + z", "min y, max z, min x"),
                                             std::pair("max x + y + z", "max y, min z, min x")}) {
        LinkFixture fixture(instance, {"hierarchicalobj 1"});
        const SlotOverride sparse(
            vex::nmoGetObjSparse, "nmoGetObjSparse",
            +[](vex::ModelHandle, std::int32_t* variables, double* values, std::int32_t* nonlinear,
                std::int32_t*, std::int32_t*) {
                const double coefficients[] = {std::nan(""), 2.0, -1.0};
                for (std::int32_t j = 0; j < 3; ++j) {
                    variables[j] = j;
                    values[j] = coefficients[j];
                    nonlinear[j] = 0;
                }
            });
        fixture.setUp();
        EXPECT_EQ(objectivesOf(fixture), expected);
    }
}

TEST(HierarchicalObjectives, TakeADefinitionInPlaceOfItsVariable) {
    LinkFixture fixture("cont x ; cont y ; min x + 2 y ; d1 : 2 x + y = 4", {"hierarchicalobj 1"});
    fixture.define(0, 0);
    fixture.setUp();
    EXPECT_EQ(objectivesOf(fixture), "min y, min prod(sum(y, -4), -0.5)");
}

TEST(StartingPoint, CutsIntegersTowardZeroAndSkipsWhatIsNoDecision) {
    LinkFixture fixture(
        "bin b ; int i in -9 9 ; semiint s in 0 9 ; semicont c in 0 9 ; cont x in -9 9 ; cont idle "
        "; "
        "cont d in -9 9 ; min b + i + s + c + x ; d1 : d + x = 1");
    const double levels[] = {0.9999999, -3.7, 2.9, 2.5, -1.25, 8.0, 5.0};
    fixture.define(/*variable=*/6, /*row=*/0);
    fixture.setUp();
    for (std::int32_t j = 0; j < 7; ++j) fixture.model.setLevel(j, levels[j]);
    fixture.link.setupStartingPoint();
    const double expected[] = {0.0, -3.0, 2.0, 2.5, -1.25};
    for (std::size_t j = 0; j < 5; ++j)
        EXPECT_EQ(fixture.link.solver->getSolution().getValue(fixture.link.variables[j]),
                  expected[j])
            << j;
    EXPECT_FALSE(vex::isBuilt(fixture.link.variables[5]));
    EXPECT_EQ(fixture.link.solver->getSolution().getValue(fixture.link.variables[6]), 2.25);
}

}  // namespace
