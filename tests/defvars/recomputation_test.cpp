#include "defvars/recomputation.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "host/operations.hpp"
#include "norv/model_builder.hpp"
#include "translate/link_fixture.hpp"

namespace {

constexpr double wrong = 77.0;  // what stands for a defined variable before

const norv::Model* instance = nullptr;
std::vector<std::int32_t> evaluated;  // rows, in their order
std::int32_t failingRow = -1;
std::int32_t evaluate(vex::ModelHandle, std::int32_t row, const double* point, double* value,
                      std::int32_t* nbErrors) {
    evaluated.push_back(row);
    *value = instance->evaluateRow(row, {point, static_cast<std::size_t>(instance->nbVariables())})
                 .value;
    return *nbErrors = row == failingRow ? 1 : 0;
}

TEST(Recomputation, SolvesTheRowsInTheirOrder) {
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    const struct {
        const char* what;
        const char* text;
        vex::DefinedVariables definedVariables;
        std::vector<double> levels;      // before; `wrong` for defined ones
        std::vector<double> expected;    // none: as before
        std::vector<std::int32_t> rows;  // evaluated
        std::int32_t fails = -1;         // row
        bool result = true;
    } cases[] = {
        {"nothing", "a : x = 1", {}, {5}, {none}, {}},
        {"a sum", "a : x + y = 10", {{0, 0}}, {wrong, 3}, {7, none}, {0}},
        {"a coefficient", "a : 5 z - 2 x = 4", {{1, 0}}, {2, wrong}, {none, 3}, {0}},
        {"what is needed comes first",
         "a : x + y = 10 ; b : y - z = 1",
         {{0, 0}, {1, 1}},
         {wrong, wrong, 4},
         {5, 5, none},
         {1, 0}},
        {"each once, in the order of the row",
         "r : p + q + s = 0 ; c : s - t = 0 ; b : q - s = 0 ; a : p - t = 0 ; d : v - s = 0",
         {{0, 0}, {1, 2}, {2, 1}, {4, 4}},
         {wrong, wrong, wrong, 2, wrong},
         {-4, 2, 2, none, 2},
         {1, 2, 0, 4}},
        {"an evaluation fails: what came before stays",
         "a : x - z = 0 ; b : y - z = 0 ; c : w - z = 0",
         {{0, 0}, {2, 1}, {3, 2}},
         {wrong, 4, wrong, wrong},
         {4, none, none, none},
         {0, 1},
         1,
         false},
        {"not in its row",
         "a : x = 1 ; b : y = 1",
         {{0, 1}},
         {wrong, 1},
         {none, none},
         {1},
         -1,
         false},
        {"needs itself",
         "a : x + y = 1 ; b : x - y = 2",
         {{0, 0}, {1, 1}},
         {wrong, wrong},
         {none, none},
         {},
         -1,
         false},
        {"beyond all numbers",
         "a : 1e-300 x + 1e300 y = 1",
         {{0, 0}},
         {wrong, 3},
         {none, none},
         {0},
         -1,
         false},
    };
    const SlotOverride evaluation(vex::nmoEvalFunc, "nmoEvalFunc", &evaluate);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        LinkFixture fixture(c.text);
        vex::nmoIndexBaseSet(fixture.link.nmo, 0);
        ASSERT_EQ(c.levels.size(), static_cast<std::size_t>(fixture.model.nbVariables()));
        for (std::int32_t j = 0; j < fixture.model.nbVariables(); ++j)
            fixture.model.setLevel(j, c.levels[static_cast<std::size_t>(j)]);
        instance = &fixture.model;
        evaluated.clear();
        failingRow = c.fails;
        EXPECT_EQ(vex::evaluateDefinedVariables(fixture.link.nmo, c.definedVariables), c.result);
        EXPECT_EQ(evaluated, c.rows);
        for (std::size_t j = 0; j < c.levels.size(); ++j) {
            EXPECT_EQ(fixture.model.levels()[j],
                      c.expected[j] == c.expected[j] ? c.expected[j] : c.levels[j])
                << j;
        }
    }
}

/// Definitions that nest far deeper than a stack of calls could: x0 needs x1 needs x2 …
TEST(Recomputation, NestsWithoutLimit) {
    bindHost();
    constexpr std::int32_t length = 200000;
    norv::ModelBuilder builder;
    for (std::int32_t j = 0; j <= length; ++j)
        builder.addVariable(0, -1e9, 1e9, j < length ? 9 : 1);
    vex::DefinedVariables definedVariables;
    for (std::int32_t i = 0; i < length; ++i) {
        builder.addRow(0, 1.0);
        builder.addCoefficient(i, i, 1.0);
        builder.addCoefficient(i, i + 1, -1.0);
        definedVariables[i] = i;
    }
    const norv::Environment environment;
    const norv::Model model = builder.finish(environment);
    vex::nmoIndexBaseSet(model.handle(), 0);
    EXPECT_TRUE(vex::evaluateDefinedVariables(model.handle(), definedVariables));
    EXPECT_EQ(model.levels()[0], 1.0 + length);
}

}  // namespace
