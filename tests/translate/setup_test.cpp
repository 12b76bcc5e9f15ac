#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <sstream>

#include "host/operations.hpp"
#include "translate/link_fixture.hpp"
#include "translate/recording_localsolver.hpp"

namespace {

using localsolver::LSExpression;

/// Puts every decision at a value of its own and compares rows and objective of the instance, by
/// the host's evaluator, with the expressions built from them.
void compareValues(LinkFixture& fixture, double scale) {
    const vex::NorvLocalSolver& link = fixture.link;
    std::vector<double> point(fixture.model.levels().begin(), fixture.model.levels().end());
    for (std::size_t j = 0; j < point.size(); ++j) {
        const LSExpression x = link.variables[j];
        if (!vex::isBuilt(x) || !x.isDecision()) continue;
        const double wish = scale * (1.0 + 0.7 * static_cast<double>(j));
        if (x.isDouble())
            x.setDoubleValue(wish);
        else
            x.setIntValue(std::llround(wish));
    }
    for (std::size_t j = 0; j < point.size(); ++j) {
        if (vex::isBuilt(link.variables[j]))
            point[j] = link.solver->getSolution().getValue(link.variables[j]);
    }
    const auto close = [](double a, double b) {
        return std::abs(a - b) <= 1e-9 * std::max(1.0, std::abs(b));
    };
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(link.constraints.size()); ++i) {
        double value = 0.0;
        std::int32_t nbErrors = 0;
        EXPECT_EQ(vex::nmoEvalFunc(link.nmo, i, point.data(), &value, &nbErrors), 0);
        const LSExpression constraint = link.constraints[static_cast<std::size_t>(i)];
        const double built = vex::isBuilt(constraint)
                                 ? link.solver->getSolution().getValue(constraint.getOperand(0))
                                 : vex::nmoGetRhsOne(link.nmo, i);  // a definition holds by itself
        EXPECT_TRUE(close(built, value)) << "row " << i << ": " << built << " for " << value;
    }
    const double objective = fixture.model.evaluateObjective(point).value;
    const double built = link.solver->getSolution().getValue(link.objectives.at(0));
    EXPECT_TRUE(close(built, objective)) << "objective: " << built << " for " << objective;
}

struct Definition {
    std::int32_t variable, row;
};

struct Case {
    const char* what;
    const char* instance;
    const char* model;
    std::vector<Definition> definitions = {};
};

void checkCases(const std::vector<Case>& cases) {
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        LinkFixture fixture(c.instance);
        for (const auto& [variable, row] : c.definitions) fixture.define(variable, row);
        fixture.setUp();
        EXPECT_EQ(fixture.dump(), c.model);
        for (const double scale : {0.0, 1.0, -2.5, 1e3}) compareValues(fixture, scale);
        EXPECT_TRUE(fixture.link.intConstants.empty() && fixture.link.doubleConstants.empty());
        fixture.setUp();
        EXPECT_EQ(fixture.dump(), c.model) << "the second time";
    }
}

TEST(Setup, BuildsLinearAndQuadraticRows) {
    checkCases({
        {"neither rows nor terms", "min 0", "obj0: sum()\n"},
        {"an objective constant", "min x + 4", "obj0: sum(x, 4)\n"},
        {"a fractional objective constant", "max x + 0.1", "obj0: sum(x, 0.1)\n"},
        {"coefficients in front of variables", "min 0 ; c1 : 3 x + y - 2 z = 1",
         "obj0: sum()\nc1: eq(sum(prod(x, 3), y, prod(z, -2)), 1)\n"},
        {"a coefficient that is nearly one", "min 1.0000001 x", "obj0: sum(prod(x, 1))\n"},
        {"the four relations", "min 0 ; a : x = 5 ; b : x >= 2.5 ; c : x <= -1 ; d : x =logic= 1",
         "obj0: sum()\na: eq(sum(x), 5)\nb: geq(sum(x), 2.5)\nc: leq(sum(x), -1)\n"
         "d: eq(sum(x), 1)\n"},
        {"a row without terms", "min x ; c1 : 0 x <= 3", "obj0: sum(x)\nc1: leq(sum(), 3)\n"},
        {"free rows are no rows", "min x ; f : y =free= 0 ; c1 : x >= 1",
         "obj0: sum(x)\nc1: geq(sum(x), 1)\n"},
        {"squares and products", "min 0 ; c1 : 2 x * x + x * y <= 4",
         "obj0: sum()\nc1: leq(sum(prod(x, x, 2), prod(x, y)), 4)\n"},
        {"a plain square after linear terms", "min 3 x + x * x",
         "obj0: sum(prod(x, 3), prod(x, x))\n"},
        {"an instance without names", "min x ; bin y ; c1 : y <= 1 ; names off",
         "obj0: sum(x)\ncon0: leq(sum(x), 1)\n"},
    });
}

TEST(Setup, BuildsDefinedVariables) {
    checkCases({
        {"solved for the variable, its bound a constraint",
         "cont x in 0 inf ; cont y ; min y ; def : 2 x + y = 4",
         "obj0: sum(y)\ncon0: geq(prod(sum(y, -4), -0.5), 0)\n",
         {{0, 0}}},
        {"used by another row",
         "cont x in -inf 7 ; min 0 ; def : y - x = 0 ; c1 : x + z <= 3",
         "obj0: sum()\ncon0: leq(sum(y), 7)\nc1: leq(sum(sum(y), z), 3)\n",
         {{0, 0}}},
        {"one through another",
         "cont a in -inf inf ; cont b in -inf inf ; min a ; "
         "d1 : a - b = 1 ; d2 : b - x = 2",
         "obj0: sum(prod(sum(prod(prod(sum(prod(x, -1), -2), -1), -1), -1), -1))\n",
         {{0, 0}, {1, 1}}},
        {"all rows are definitions",
         "cont a in -inf inf ; cont b in 1 2 ; min 0 ; "
         "d1 : a + b = 1",
         "obj0: sum()\n",
         {{0, 0}}},
    });
}

TEST(Setup, FailsWithTheLinksOwnErrors) {
    struct Failure {
        const char* instance;
        const char* message;
        const char* function;
        std::vector<Definition> definitions = {};
        std::vector<std::string> settings = {};
    };
    const char* setup = "NorvLocalSolver::setupModel";
    const char* variable = "NorvLocalSolver::getVariable";
    const char* function = "NorvLocalSolver::makeFunction";
    const Failure failures[] = {
        {"min 0 ; c1 : x =ext= 1", "Unsupported equation type.", setup},
        {"min 0 ; c1 : x =cone= 1", "Unsupported equation type.", setup},
        {"sos1 x ; min x", "Special Ordered Sets not supported.", variable},
        {"sos2 x ; min x", "Special Ordered Sets not supported.", variable},
        {"min x * y",
         "NORV objective function must be linear for hierarchical optimization.",
         "NorvLocalSolver::makeHierarchicalObjectives",
         {},
         {"hierarchicalobj 1"}},
        {"min 0 ; d1 : x + y = 1 ; d2 : x - y = 2",
         "Recognized circular definition when handling defined variable x",
         variable,
         {{0, 0}, {1, 1}}},
        {"min 0 ; c1 : y + curved(x) = 1",
         "Defined variable x does not appear linearly in equation c1",
         function,
         {{1, 0}}},
        {"min x ; c1 : y = 1",
         "Defined variable x does not appear linearly in equation c1",
         function,
         {{0, 0}}},
    };
    for (const Failure& f : failures) {
        SCOPED_TRACE(f.message);
        LinkFixture fixture(f.instance, f.settings);
        for (const auto& [j, i] : f.definitions) fixture.define(j, i);
        try {
            fixture.setUp();
            ADD_FAILURE() << "no exception";
        } catch (const localsolver::LSException& error) {
            EXPECT_STREQ(error.what(), f.message);
            EXPECT_EQ(error.getErrorCode(), LS_ERROR_CALLER);
            EXPECT_EQ(error.getFileName(), "nlocalsolver");
            EXPECT_EQ(error.getFunctionName(), f.function);
        }
    }
}

TEST(Setup, RefusesCodesThatNoHostIsKnownToSend) {
    LinkFixture fixture("min x ; c1 : x >= 0");
    const auto messageOf = [&] {
        try {
            fixture.setUp();
        } catch (const localsolver::LSException& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    {
        const SlotOverride type(
            vex::nmoGetVarTypeOne, "nmoGetVarTypeOne",
            +[](vex::ModelHandle, std::int32_t) { return 7; });
        EXPECT_EQ(messageOf(), "Unexpected variable type.");
    }
    const SlotOverride type(
        vex::nmoGetEquTypeOne, "nmoGetEquTypeOne",
        +[](vex::ModelHandle, std::int32_t) { return 7; });
    EXPECT_EQ(messageOf(), "Unexpected equation type.");
}

/// The objective is one variable at the end of `length` definitions.
std::string chain(std::int32_t length) {
    std::ostringstream text;
    text << "min x0";
    for (std::int32_t k = 0; k < length; ++k)
        text << " ; d" << k << " : x" << k << " - x" << k + 1 << " = 1";
    return text.str();
}

TEST(Setup, NestsDefinitionsUpToTheLimit) {
    constexpr std::int32_t longest = vex::NorvLocalSolver::deepestNesting - 1;  // and the objective
    for (const std::int32_t length : {longest, longest + 1}) {
        LinkFixture fixture(chain(length));
        for (std::int32_t k = 0; k < length; ++k) fixture.define(k, k);
        if (length > longest) {
            EXPECT_THROW(fixture.setUp(), vex::RecursionDepthLimitReached);
            continue;
        }
        fixture.setUp();
        EXPECT_EQ(fixture.link.setupDepth, 0);
        compareValues(fixture, 1.0);
    }
}

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++found;
    return found;
}

TEST(Setup, WarnsOnceOfClampedBounds) {
    LinkFixture fixture(
        "cont a in -inf 1 ; cont b in 0 inf ; int c in 0 inf ; cont d in 0 inf ; min a + b + c + "
        "d");
    fixture.setUp();
    EXPECT_EQ(count(fixture.log,
                    "Warning: Increased the lower bound for some continuous variables "
                    "to -1e10.\n"),
              1U);
    EXPECT_EQ(count(fixture.log,
                    "Warning: Decreased the upper bound for some continuous variables "
                    "to 1e10.\n"),
              1U);
    EXPECT_EQ(fixture.link.nbLowerClamped, 1);
    EXPECT_EQ(fixture.link.nbUpperClamped, 3);
}

TEST(Setup, MakesItsCallsInThisOrder) {
    LinkFixture fixture("cont x ; bin b in 1 1 ; max 2 x + 3 ; c1 : x + b <= 4.5");
    fixture.link.solver = std::make_unique<localsolver::LocalSolver>();
    recording::reset();
    recording::startRecording();
    fixture.link.setupModel();
    const std::vector<std::string> expected = {
        "ls_create_expression(3) = 0",          // the objective's function
        "ls_create_expression(1) = 1",          // x, made where it is met first
        "ls_create_double_constant(0) = 2",     //
        "ls_expr_add_operand(1, 2)",            //
        "ls_create_double_constant(10) = 3",    //
        "ls_expr_add_operand(1, 3)",            //
        "ls_expr_set_name(1, \"x\")",           //
        "ls_create_expression(5) = 4",          // 2 x
        "ls_expr_add_operand(4, 1)",            //
        "ls_create_double_constant(2) = 5",     //
        "ls_expr_add_operand(4, 5)",            //
        "ls_expr_add_operand(0, 4)",            //
        "ls_create_int_constant(3) = 6",        //
        "ls_expr_add_operand(0, 6)",            //
        "ls_add_objective(0, 1)",               // maximise
        "ls_create_expression(3) = 7",          // the row's function: x is known
        "ls_expr_add_operand(7, 1)",            //
        "ls_create_expression(0) = 8",          // b, fixed by a constraint
        "ls_create_expression(8) = 9",          //
        "ls_expr_add_operand(9, 8)",            //
        "ls_create_double_constant(1) = 10",    //
        "ls_expr_add_operand(9, 10)",           //
        "ls_add_constraint(9)",                 //
        "ls_expr_set_name(8, \"b\")",           //
        "ls_expr_add_operand(7, 8)",            //
        "ls_create_double_constant(4.5) = 11",  //
        "ls_create_expression(11) = 12",        // less or equal
        "ls_expr_add_operand(12, 7)",           //
        "ls_expr_add_operand(12, 11)",          //
        "ls_add_constraint(12)",                //
        "ls_expr_set_name(12, \"c1\")",         //
        "ls_close()",
    };
    EXPECT_EQ(recording::lines(), expected);
    recording::reset();
}

}  // namespace
