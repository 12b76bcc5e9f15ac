// The model object through the link's eyes: single facts, one case each.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "hostapi/codes.hpp"
#include "norv/host_operations.hpp"
#include "norv/model_builder.hpp"
#include "norv/options.hpp"

namespace {

using hosttest::hub;
using norv::ModelBuilder;
using norv::objectiveRow;
using testing::ElementsAre;
namespace equation = hostapi::equation_type;
namespace variable = hostapi::variable_type;

constexpr double infinity = std::numeric_limits<double>::infinity();

struct Host {
    norv::Environment environment;
    std::string log;
    Host() {
        environment.setLogSink([this](std::string_view text) { log += text; });
    }
};

/// A builder with `n` continuous variables in [-10, 10].
ModelBuilder builderWith(int n) {
    ModelBuilder builder;
    for (int j = 0; j < n; ++j) builder.addVariable(variable::continuous, -10.0, 10.0);
    return builder;
}

struct Term {
    std::int32_t variable;
    double value;
    std::int32_t flag;
    bool operator==(const Term&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Term& term) {
    return out << term.value << " * x" << term.variable << " flag " << term.flag;
}

std::vector<Term> sparsePart(hostapi::ModelHandle nmo, std::int32_t row) {
    std::int32_t nbEntries = 0, nbNonlinear = 0;
    hub().nmoGetRowSparse(nmo, row, nullptr, nullptr, nullptr, &nbEntries, &nbNonlinear);
    const auto size = static_cast<std::size_t>(nbEntries);
    std::vector<std::int32_t> variables(size), flags(size);
    std::vector<double> values(size);
    hub().nmoGetRowSparse(nmo, row, variables.data(), values.data(), flags.data(), nullptr,
                          nullptr);
    std::vector<Term> terms;
    for (std::size_t k = 0; k < size; ++k) terms.push_back({variables[k], values[k], flags[k]});
    return terms;
}

std::vector<Term> rowWalk(hostapi::ModelHandle nmo, std::int32_t row) {
    std::vector<Term> terms;
    void* cursor = nullptr;
    do {
        Term term{};
        hub().nmoGetRowJacInfoOne(nmo, row, &cursor, &term.value, &term.variable, &term.flag);
        if (term.variable < 0) break;
        terms.push_back(term);
    } while (cursor != nullptr);
    return terms;
}

TEST(ModelObject, ProjectsLevelsOnTheDomain) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        std::int32_t type;
        double lower, upper, level, seen;
    } cases[] = {
        {variable::continuous, 1.0, 4.0, 0.0, 1.0},
        {variable::continuous, 1.0, 4.0, 9.0, 4.0},
        {variable::continuous, 1.0, 4.0, 2.5, 2.5},
        {variable::continuous, -3.0, -1.0, nan, -1.0},
        {variable::integer, -infinity, infinity, -7.0, -7.0},
        {variable::semiContinuous, 4.0, 9.0, 1.0, 0.0},
        {variable::semiContinuous, 4.0, 9.0, 3.0, 4.0},
        {variable::binary, 1.0, 0.0, 0.5, 1.0},
    };
    Host host;
    ModelBuilder builder;
    for (const auto& c : cases) builder.addVariable(c.type, c.lower, c.upper, c.level);
    const auto model = builder.finish(host.environment);
    hub().nmoIndexBaseSet(model.handle(), 0);
    for (std::size_t j = 0; j < std::size(cases); ++j) {
        EXPECT_EQ(hub().nmoGetVarLOne(model.handle(), static_cast<std::int32_t>(j)), cases[j].seen)
            << "case " << j;
    }
    EXPECT_EQ(hub().nmoNDisc(model.handle()), 4);
}

TEST(ModelObject, HonoursTheIndexBase) {
    Host host;
    auto builder = builderWith(2);
    builder.addRow(equation::less, 7.0, "only");
    builder.addCoefficient(0, 1, 3.0);
    builder.addQuadratic(0, 0, 1, 5.0);
    const auto model = builder.finish(host.environment);
    const auto nmo = model.handle();
    for (const std::int32_t base : {1, 0, 1}) {
        if (base == 0) hub().nmoIndexBaseSet(nmo, 0);
        if (base == 1) hub().nmoIndexBaseSet(nmo, 1);
        EXPECT_EQ(hub().nmoGetRhsOne(nmo, base), 7.0);
        EXPECT_THAT(sparsePart(nmo, base), ElementsAre(Term{base, 0.0, 1}, Term{base + 1, 3.0, 0}));
        std::int32_t first = -1, second = -1, row = -1;
        double value = 0.0;
        hub().nmoGetRowQ(nmo, base, &first, &second, &value);
        EXPECT_THAT((std::vector{first, second}), ElementsAre(base, base + 1));
        void* cursor = nullptr;
        hub().nmoGetColJacInfoOne(nmo, base + 1, &cursor, &value, &row, nullptr);
        EXPECT_EQ(row, base);
        EXPECT_EQ(hub().nmoGetjSolver(nmo, base + 1), base + 1);
    }
    hub().nmoIndexBaseSet(nmo, 2);
    EXPECT_EQ(host.log, "hubdclib64: nmoIndexBaseSet: the index base is 0 or 1\n");
}

TEST(ModelObject, DoublesDiagonalEntriesOnlyForTheLink) {
    Host host;
    auto builder = builderWith(2);
    builder.addRow(equation::less, 0.0);
    builder.addQuadratic(0, 0, 0, 3.0);
    builder.addQuadratic(0, 1, 0, 4.0);
    builder.addQuadratic(objectiveRow, 1, 1, -1.0);
    const auto model = builder.finish(host.environment);
    const auto nmo = model.handle();
    hub().nmoIndexBaseSet(nmo, 0);
    std::int32_t first[2], second[2];
    double values[2];
    hub().nmoGetRowQ(nmo, 0, first, second, values);
    EXPECT_THAT(first, ElementsAre(0, 0));
    EXPECT_THAT(second, ElementsAre(0, 1));
    EXPECT_THAT(values, ElementsAre(6.0, 4.0));
    const double point[] = {2.0, 5.0};
    double value = 0.0;
    std::int32_t nbErrors = -1;
    EXPECT_EQ(hub().nmoEvalFunc(nmo, 0, point, &value, &nbErrors), 0);
    EXPECT_EQ(value, 3.0 * 4.0 + 4.0 * 10.0);
    EXPECT_EQ(model.evaluateObjective(point).value, -25.0);
    EXPECT_EQ(hub().nmoUseQ(nmo), 1);
    EXPECT_EQ(hub().nmoMaxQNZ(nmo), 2);
    EXPECT_EQ(hub().nmoGetObjOrder(nmo), hostapi::function_order::quadratic);
}

TEST(ModelObject, TellsLinearOccurrencesFromOthers) {
    // Row: 2 x0 + x0 * x1 + exp(x2) + 7 x2 + 5 x3
    Host host;
    auto builder = builderWith(4);
    builder.addRow(equation::equality, 1.0);
    builder.addCoefficient(0, 0, 2.0);
    builder.addQuadratic(0, 0, 1, 1.0);
    const std::int32_t opcodes[] = {1, 20}, fields[] = {3, 10};
    builder.setInstructions(0, opcodes, fields);
    builder.addCoefficient(0, 2, 7.0);
    builder.addCoefficient(0, 3, 5.0);
    const auto model = builder.finish(host.environment);
    const auto nmo = model.handle();
    hub().nmoIndexBaseSet(nmo, 0);
    // A flag in the sparse part: do not add it; in a walk: the row cannot be solved for it.
    EXPECT_THAT(sparsePart(nmo, 0),
                ElementsAre(Term{0, 2.0, 0}, Term{1, 0.0, 1}, Term{2, 7.0, 1}, Term{3, 5.0, 0}));
    EXPECT_THAT(rowWalk(nmo, 0),
                ElementsAre(Term{0, 2.0, 1}, Term{1, 0.0, 1}, Term{2, 7.0, 1}, Term{3, 5.0, 0}));
    EXPECT_EQ(hub().nmoGetEquOrderOne(nmo, 0), hostapi::function_order::nonlinear);
    // The linear term of x2 is at the end of its list: exp(x2), push x2, add pool 1 times it.
    ASSERT_EQ(hub().nmoNLCodeSizeMaxRow(nmo), 4);
    std::int32_t nb = 0, codes[4], operands[4];
    hub().nmoDirtyGetRowFNLInstr(nmo, 0, &nb, codes, operands);
    EXPECT_EQ(nb, 4);
    EXPECT_THAT(codes, ElementsAre(1, 20, 1, 24));
    EXPECT_THAT(operands, ElementsAre(3, 10, 3, 1));
    EXPECT_EQ(hub().nmoPPool(nmo)[0], 7.0);
    std::int32_t nbErrors = -1;
    double value = 0.0;
    const double point[] = {1.0, 2.0, 0.0, 3.0};
    EXPECT_EQ(hub().nmoEvalFunc(nmo, 0, point, &value, &nbErrors), 0);
    EXPECT_EQ(nbErrors, 0);
    EXPECT_EQ(value, 2.0 + 2.0 + 1.0 + 15.0);
    const double overflow[] = {1.0, 2.0, 1000.0, 3.0};
    EXPECT_NE(hub().nmoEvalFunc(nmo, 0, overflow, &value, &nbErrors), 0);
    EXPECT_GT(nbErrors, 0);
}

TEST(ModelObject, SplitsRangesAndNamesTheTwin) {
    Host host;
    auto builder = builderWith(1);
    const struct {
        double lower, upper;
        std::string name;
    } rows[] = {{1.0, 3.0, "cap"},   {2.0, 2.0, "fix"},         {-infinity, 4.0, "cap_up"},
                {5.0, infinity, ""}, {-infinity, infinity, ""}, {-6.0, 6.0, ""}};
    for (const auto& row : rows) {
        builder.addCoefficient(builder.addRangeRow(row.lower, row.upper, row.name), 0, 1.0);
    }
    builder.addQuadratic(0, 0, 0, 8.0);
    const auto model = builder.finish(host.environment);
    const struct {
        std::int32_t type;
        double rightHandSide;
        std::string name;
    } expected[] = {{equation::greater, 1.0, "cap"},  {equation::equality, 2.0, "fix"},
                    {equation::less, 4.0, "cap_up"},  {equation::greater, 5.0, "e4"},
                    {equation::free, 0.0, "e5"},      {equation::greater, -6.0, "e6"},
                    {equation::less, 3.0, "cap__up"}, {equation::less, 6.0, "e6_up"}};
    ASSERT_EQ(model.nbRows(), 8);
    for (std::int32_t i = 0; i < model.nbRows(); ++i) {
        EXPECT_EQ(model.rowType(i), expected[i].type) << i;
        EXPECT_EQ(model.rightHandSide(i), expected[i].rightHandSide) << i;
        EXPECT_EQ(model.rowName(i), expected[i].name) << i;
    }
    const double point[] = {2.0};
    EXPECT_EQ(model.evaluateRow(6, point).value, 34.0);
}

TEST(ModelObject, CompletesTheSolutionFromTheLevels) {
    Host host;
    auto builder = builderWith(2);
    builder.addCoefficient(objectiveRow, 0, 2.0);
    builder.addQuadratic(objectiveRow, 0, 1, 10.0);
    builder.setObjectiveConstant(0.5);
    const auto model = builder.finish(host.environment);
    const auto nmo = model.handle();
    hub().nmoIndexBaseSet(nmo, 0);
    hub().nmoSetVarLOne(nmo, 0, 3.0);
    hub().nmoSetVarLOne(nmo, 1, -1.0);
    hub().nmoSetHeadnTail(nmo, hostapi::head_and_tail::iterations, 17.0);
    hub().nmoModelStatSet(nmo, 7);
    hub().nmoSolveStatSet(nmo, 3);
    hub().nmoCompleteSolution(nmo);
    EXPECT_EQ(hub().nmoGetHeadnTail(nmo, hostapi::head_and_tail::objective), 6.0 - 30.0 + 0.5);
    EXPECT_EQ(model.headAndTail(hostapi::head_and_tail::iterations), 17.0);
    EXPECT_EQ(hub().nmoModelStat(nmo), 7);
    EXPECT_EQ(model.solveStatus(), 3);
    EXPECT_THAT(model.levels(), ElementsAre(3.0, -1.0));
}

TEST(ModelObject, ReportsIndicesOutOfRangeInsteadOfReadingThem) {
    Host host;
    auto builder = builderWith(2);
    builder.addRow(equation::less, 0.0);
    const auto model = builder.finish(host.environment);
    const auto nmo = model.handle();
    char name[256] = "untouched";
    EXPECT_TRUE(std::isnan(hub().nmoGetVarLowerOne(nmo, 3)));
    EXPECT_EQ(hub().nmoGetEquTypeOne(nmo, 0), -1);
    EXPECT_STREQ(hub().nmoGetVarNameOne(nmo, std::numeric_limits<std::int32_t>::min(), name), "");
    EXPECT_TRUE(std::isnan(hub().nmoGetHeadnTail(nmo, 16)));
    std::int32_t nbEntries = 99;
    hub().nmoGetRowStat(nmo, 7, &nbEntries, nullptr, nullptr);
    EXPECT_EQ(nbEntries, 0);
    EXPECT_EQ(host.log,
              "hubdclib64: nmoGetVarLowerOne: variable 3 is out of range, the instance has 2, "
              "counted from 1\n"
              "hubdclib64: nmoGetEquTypeOne: row 0 is out of range, the instance has 1, counted "
              "from 1\n"
              "hubdclib64: CnmoGetVarNameOne: variable -2147483648 is out of range, the instance "
              "has 2, counted from 1\n"
              "hubdclib64: nmoGetHeadnTail: there is no statistic 16\n"
              "hubdclib64: nmoGetRowStat: row 7 is out of range, the instance has 1, counted from "
              "1\n");
}

TEST(ModelObject, HasNamesWhetherOrNotItShowsADictionary) {
    Host host;
    const std::string longest(255, 'n');
    for (const bool withNames : {true, false}) {
        ModelBuilder builder;
        builder.addVariable(variable::continuous, 0.0, 1.0, 0.0, longest);
        builder.addVariable(variable::continuous, 0.0, 1.0);
        builder.setWithNames(withNames);
        auto model = builder.finish(host.environment);
        model.setOptionFile("dir/my.opt", 2);
        const auto nmo = model.handle();
        char name[256];
        EXPECT_EQ(hub().nmoDict(nmo) != nullptr, withNames);
        EXPECT_EQ(hub().nmoGetVarNameOne(nmo, 1, name), longest);
        EXPECT_STREQ(hub().nmoGetVarNameOne(nmo, 2, name), "x2");
        EXPECT_STREQ(hub().nmoNameOptFile(nmo, name), "dir/my.opt");
        EXPECT_EQ(hub().nmoOptFile(nmo), 2);
        EXPECT_EQ(hub().nmoEnvironment(nmo), host.environment.handle());
        EXPECT_EQ(hub().nmoObjVar(nmo), hub().nmoValNAInt(nmo));
    }
}

TEST(ModelBuilder, RefusesWhatNoInstanceCanHold) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    auto builder = builderWith(2);
    builder.addRow(equation::less, 0.0);
    const std::int32_t opcodes[] = {1}, fields[] = {3};
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"variable 2 is out of range, there are 2", [&] { builder.addCoefficient(0, 2, 1.0); }},
        {"row -2 is out of range, there are 1", [&] { builder.addCoefficient(-2, 0, 1.0); }},
        {"row -1 is out of range, there are 1", [&] { builder.setRange(-1, 0.0, 1.0); }},
        {"a coefficient is no finite number", [&] { builder.addCoefficient(0, 0, nan); }},
        {"twice a quadratic coefficient is no finite number",
         [&] { builder.addQuadratic(0, 0, 0, 1e308); }},
        {"a lower bound is a number or -infinity", [&] { builder.setBounds(0, infinity, 1.0); }},
        {"an upper bound is a number or infinity", [&] { builder.setBounds(0, 0.0, nan); }},
        {"there is no variable type 7", [&] { builder.setVariableType(0, 7); }},
        {"there is no equation type -1", [&] { builder.addRow(-1, 0.0); }},
        {"a right-hand side is no finite number", [&] { builder.addRow(0, infinity); }},
        {"an instruction list has at least one opcode and one field per opcode",
         [&] { builder.setInstructions(0, {}, {}); }},
        {"e1: instruction 1 of 1: nlPushV names variable 3, there are 2, counted from 1",
         [&] { builder.setInstructions(0, opcodes, fields); }},
    };
    for (const auto& [message, call] : cases) {
        try {
            call();
            ADD_FAILURE() << message;
        } catch (const std::invalid_argument& refusal) {
            EXPECT_STREQ(refusal.what(), message);
        }
    }
    EXPECT_THROW(builder.addRow(0, 0.0, std::string(256, 'n')), std::invalid_argument);
    const auto model = builder.finish(norv::Environment());
    EXPECT_EQ(model.nbRows(), 1);
    EXPECT_EQ(model.nbCoefficients(), 0);
}

TEST(DefinedVariables, AreResolvedByNameOrReported) {
    const struct {
        const char* what;
        std::vector<std::string> pairs;  // variable, equation
        std::vector<std::int32_t> rows;
        std::string log;
    } cases[] = {
        {"every name is found", {"x e1", "x2 last"}, {0, 1}, ""},
        {"an unknown variable",
         {"y e1", "x last"},
         {1},
         "my.opt:7: defvar: the model has no variable \"y\".\n"},
        {"names keep their case",
         {"x E1"},
         {},
         "my.opt:7: defvar: the model has no equation \"E1\".\n"},
        {"an ambiguous name",
         {"x2 twice"},
         {},
         "my.opt:7: defvar: the model has several equations \"twice\".\n"},
        {"a row that is gone",
         {"x gone"},
         {},
         "my.opt:7: defvar: equation \"gone\" is a free row and defines nothing.\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Host host;
        ModelBuilder builder;
        builder.addVariable(variable::continuous, 0.0, 1.0, 0.0, "x");
        builder.addVariable(variable::continuous, 0.0, 1.0);
        builder.addRow(equation::equality, 0.0);
        builder.addRow(equation::free, 0.0, "gone");
        for (const char* name : {"last", "twice", "twice"})
            builder.addRow(equation::equality, 0.0, name);
        const auto model = builder.finish(host.environment);
        hub().nmoIndexBaseSet(model.handle(), 0);
        hub().nmoSetNRowPerm(model.handle());
        norv::Options options;
        ASSERT_TRUE(options.readDefinition(NORV_DEFINITION_FILE));
        for (const auto& pair : c.pairs) ASSERT_TRUE(options.set("defvar " + pair, "my.opt:7"));
        std::int32_t nbPairs = -1, rows[2], variables[2];
        const auto result = hub().nmoGetVarEquMap(model.handle(), 1, options.handle(), 0, &nbPairs,
                                                  rows, variables, nullptr);
        EXPECT_EQ(result == 0, c.log.empty());
        EXPECT_EQ(std::vector<std::int32_t>(rows, rows + nbPairs), c.rows);
        EXPECT_EQ(host.log, c.log);
    }
}

}  // namespace
