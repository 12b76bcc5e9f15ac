#include <gtest/gtest.h>

#include <limits>

#include "translate/link_fixture.hpp"

namespace {

using localsolver::LSExpression;
using vex::NorvLocalSolver;

LSExpression node(NorvLocalSolver& link, ls_operator op, const std::vector<LSExpression>& operands,
                  const char* name = nullptr) {
    const LSExpression e = link.solver->getModel().createExpression(op);
    for (const LSExpression operand : operands) e.addOperand(operand);
    if (name != nullptr) e.setName(name);
    return e;
}

/// Three float decisions, and one integer constant.
struct Given {
    NorvLocalSolver& link;
    LSExpression x, y, z;
};

struct Case {
    const char* what;
    LSExpression (*build)(const Given&);
    const char* expected;
};

constexpr bool own = true;
constexpr bool shared = false;
const LSExpression none;

void checkCases(const char* instance, const std::vector<Case>& cases) {
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        LinkFixture fixture(instance);
        fixture.startModel();
        NorvLocalSolver& link = fixture.link;
        const Given given = {link, link.getVariable(0), link.getVariable(1), link.getVariable(2)};
        EXPECT_EQ(fixture.typedText(c.build(given)), c.expected);
    }
}

constexpr const char* named = "cont x ; cont y ; cont z";
constexpr const char* unnamed = "cont x ; cont y ; cont z ; names off";

TEST(ConstructionHelpers, KeepConstantsIntegerWhenTheyAre) {
    checkCases(
        named,
        {
            {"whole", [](const Given& g) { return g.link.makeConstant(3.0); }, "3"},
            {"minus zero", [](const Given& g) { return g.link.makeConstant(-0.0); }, "0"},
            {"fraction", [](const Given& g) { return g.link.makeConstant(2.5); }, "2.5"},
            {"beyond integers", [](const Given& g) { return g.link.makeConstant(1e300); },
             "1e+300"},
            {"the first double beyond integers",
             [](const Given& g) { return g.link.makeConstant(0x1p63); }, "9223372036854775808.0"},
            {"the lowest integer", [](const Given& g) { return g.link.makeConstant(-0x1p63); },
             "-9223372036854775808"},
            {"infinity",
             [](const Given& g) {
                 return g.link.makeConstant(std::numeric_limits<double>::infinity());
             },
             "inf"},
        });
}

TEST(ConstructionHelpers, ScaleFoldingConstantsAndExtendingOwnProducts) {
    checkCases(
        named,
        {
            {"by one", [](const Given& g) { return g.link.scaleExpression(g.x, own, 1.0); }, "x"},
            {"by zero", [](const Given& g) { return g.link.scaleExpression(g.x, own, 0.0); }, "0"},
            {"a decision", [](const Given& g) { return g.link.scaleExpression(g.x, own, 2.0); },
             "prod(x, 2.0)"},
            {"an integer by a whole number",
             [](const Given& g) {
                 return g.link.scaleExpression(g.link.makeConstant(3), own, 2.0);
             },
             "6"},
            {"an integer by a fraction",
             [](const Given& g) {
                 return g.link.scaleExpression(g.link.makeConstant(3), own, 0.5);
             },
             "1.5"},
            {"a double to a whole number",
             [](const Given& g) {
                 return g.link.scaleExpression(g.link.makeConstant(2.5), own, 2.0);
             },
             "5"},
            {"an integer beyond the range",
             [](const Given& g) {
                 return g.link.scaleExpression(
                     g.link.makeIntConstant(std::numeric_limits<std::int64_t>::max()), own, 2.0);
             },
             "18446744073709551616.0"},
            {"the result is registered again",
             [](const Given& g) {
                 const LSExpression c = g.link.scaleExpression(g.link.makeConstant(3), own, 0.5);
                 return g.link.scaleExpression(c, own, 4.0);
             },
             "6"},
            {"an own product",
             [](const Given& g) {
                 return g.link.scaleExpression(node(g.link, LS_OP_PROD, {g.x, g.y}), own, 3.0);
             },
             "prod(x, y, 3.0)"},
            {"a shared product",
             [](const Given& g) {
                 return g.link.scaleExpression(node(g.link, LS_OP_PROD, {g.x, g.y}), shared, 3.0);
             },
             "prod(prod(x, y), 3.0)"},
            {"a named product",
             [](const Given& g) {
                 return g.link.scaleExpression(node(g.link, LS_OP_PROD, {g.x, g.y}, "p"), own, 3.0);
             },
             "prod(prod(x, y), 3.0)"},
        });
}

TEST(ConstructionHelpers, CombineLinearly) {
    checkCases(named,
               {
                   {"the same decision twice",
                    [](const Given& g) {
                        return g.link.makeLinearCombination(2.0, g.x, own, 3.0, g.x, own, 1.0);
                    },
                    "sum(prod(x, 5.0), 1)"},
                   {"constants only",
                    [](const Given& g) {
                        return g.link.makeLinearCombination(1.0, g.link.makeConstant(2), own, 1.0,
                                                            g.link.makeConstant(3.5), own, 0.0);
                    },
                    "5.5"},
                   {"one operand alone",
                    [](const Given& g) {
                        return g.link.makeLinearCombination(1.0, g.x, own, 1.0, none, own, 0.0);
                    },
                    "x"},
                   {"a constant folds into the other",
                    [](const Given& g) {
                        return g.link.makeLinearCombination(2.0, g.link.makeConstant(3), own, -1.0,
                                                            g.y, own, 0.5);
                    },
                    "sum(prod(y, -1.0), 6.5)"},
                   {"a decision and an own sum, the decision's flag decides",
                    [](const Given& g) {
                        return g.link.makeLinearCombination(
                            1.0, g.x, shared, 1.0, node(g.link, LS_OP_SUM, {g.y}), own, 0.0);
                    },
                    "sum(sum(y), x)"},
                   {"a shared sum is copied into the own one",
                    [](const Given& g) {
                        return g.link.makeLinearCombination(
                            1.0, node(g.link, LS_OP_SUM, {g.x}), own, 1.0,
                            node(g.link, LS_OP_SUM, {g.y, g.z}), shared, 2.0);
                    },
                    "sum(x, y, z, 2)"},
                   {"the flag moves with a sum that takes the empty place",
                    [](const Given& g) {
                        return g.link.makeLinearCombination(1.0, g.link.makeConstant(1), own, 1.0,
                                                            node(g.link, LS_OP_SUM, {g.y}), shared,
                                                            0.0);
                    },
                    "sum(sum(y), 1)"},
                   {"a factor of zero",
                    [](const Given& g) {
                        return g.link.makeLinearCombination(0.0, g.x, own, 1.0, g.y, own, 0.0);
                    },
                    "sum(0, y)"},
               });
}

/// y, x, z in the order in which an evaluation stack hands them over.
LSExpression addThree(const Given& g) {
    const LSExpression two = g.link.makeLinearCombination(1.0, g.y, own, 1.0, g.x, own, 0.0);
    return g.link.makeLinearCombination(1.0, g.z, own, 1.0, two, own, 0.0);
}

TEST(ConstructionHelpers, ExtendASumWhenNoNameForbidsIt) {
    checkCases(named, {{"with names", addThree, "sum(sum(y, x), z)"}});
    checkCases(unnamed, {{"without names", addThree, "sum(y, x, z)"}});
}

TEST(ConstructionHelpers, FlattenAssociativeOperators) {
    checkCases(named, {
                          {"two decisions",
                           [](const Given& g) {
                               return g.link.makeFlatExpression(LS_OP_MAX, g.x, own, g.y, own);
                           },
                           "max(x, y)"},
                          {"a decision with itself",
                           [](const Given& g) {
                               return g.link.makeFlatExpression(LS_OP_MIN, g.x, own, g.x, own);
                           },
                           "min(x, x)"},
                          {"an own product with itself",
                           [](const Given& g) {
                               const LSExpression p = node(g.link, LS_OP_PROD, {g.x, g.y});
                               return g.link.makeFlatExpression(LS_OP_PROD, p, own, p, own);
                           },
                           "prod(x, y, x, y)"},
                          {"two lists, the second is own",
                           [](const Given& g) {
                               return g.link.makeFlatExpression(
                                   LS_OP_MIN, node(g.link, LS_OP_MIN, {g.x}), shared,
                                   node(g.link, LS_OP_MIN, {g.y, g.z}), own);
                           },
                           "min(y, z, x)"},
                          {"two lists, both shared",
                           [](const Given& g) {
                               return g.link.makeFlatExpression(
                                   LS_OP_MIN, node(g.link, LS_OP_MIN, {g.x}), shared,
                                   node(g.link, LS_OP_MIN, {g.y}), shared);
                           },
                           "min(min(x), min(y))"},
                          {"a list that takes an operand in front of it",
                           [](const Given& g) {
                               return g.link.makeFlatExpression(
                                   LS_OP_AND, g.x, own, node(g.link, LS_OP_AND, {g.y}), own);
                           },
                           "and(y, x)"},
                          {"another operator's list",
                           [](const Given& g) {
                               return g.link.makeFlatExpression(
                                   LS_OP_XOR, node(g.link, LS_OP_OR, {g.x}), own, g.y, own);
                           },
                           "xor(or(x), y)"},
                      });
}

TEST(ConstructionHelpers, LeaveWhatStandsForAVariableAlone) {
    LinkFixture fixture("cont x ; cont y ; cont z ; names off ; def : x - y = 1");
    fixture.define(0, 0);
    fixture.startModel();
    NorvLocalSolver& link = fixture.link;
    link.definedVariables[0] = 0;
    const LSExpression x = link.getVariable(0);
    const std::string definition = "prod(sum(prod(y, -1.0), -1), -1.0)";
    EXPECT_EQ(fixture.typedText(x), definition);
    EXPECT_EQ(fixture.typedText(link.scaleExpression(x, own, 2.0)),
              "prod(" + definition + ", 2.0)");
    EXPECT_EQ(fixture.typedText(link.makeFlatExpression(LS_OP_PROD, x, own, x, own)),
              "prod(" + definition + ", " + definition + ")");
    EXPECT_EQ(fixture.typedText(x), definition);
}

TEST(ConstructionHelpers, RefuseToInventTheValueOfAConstant) {
    LinkFixture fixture(named);
    fixture.startModel();
    const LSExpression foreign = fixture.link.solver->getModel().createConstant(std::int64_t{7});
    try {
        (void)fixture.link.getConstantValue(foreign);
        FAIL() << "no exception";
    } catch (const localsolver::LSException& error) {
        EXPECT_EQ(error.getErrorCode(), LS_ERROR_CALLER);
        EXPECT_EQ(error.getFunctionName(), "NorvLocalSolver::getConstantValue");
    }
}

}  // namespace
