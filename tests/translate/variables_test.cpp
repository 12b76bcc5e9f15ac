#include <gtest/gtest.h>

#include "translate/link_fixture.hpp"

namespace {

struct Case {
    const char* what;
    const char* declaration;  ///< of the variable v
    ls_operator op;
    const char* bounds;
    const char* constraints;  ///< that come with it
    std::int32_t nbLowerClamped = 0;
    std::int32_t nbUpperClamped = 0;
};

const Case cases[] = {
    {"continuous", "cont v in 0 2.5", LS_OP_FLOAT, "0.0, 2.5", ""},
    {"fixed continuous", "cont v in 3 3", LS_OP_FLOAT, "3.0, 3.0", ""},
    {"no lower bound", "cont v in -inf 5", LS_OP_FLOAT, "-1e+10, 5.0", "", 1, 0},
    {"large is not infinite", "cont v in -1e300 1e300", LS_OP_FLOAT, "-1e+300, 1e+300", ""},
    {"binary", "bin v", LS_OP_BOOL, "", ""},
    {"binary fixed at one", "bin v in 1 1", LS_OP_BOOL, "", "eq(v, 1.0)"},
    {"binary fixed at zero", "bin v in 0 0", LS_OP_BOOL, "", "eq(v, 0.0)"},
    {"binary without values", "bin v in 1 0", LS_OP_BOOL, "", "eq(v, 1.0) eq(v, 0.0)"},
    {"binary at the tolerances", "bin v in 1e-6 0.999999", LS_OP_BOOL, "", ""},
    {"integer", "int v in 0.5 3.7", LS_OP_INT, "1, 3", ""},
    {"fixed integer", "int v in 2 2", LS_OP_INT, "2, 2", ""},
    {"integer without bounds", "int v in -inf inf", LS_OP_INT, "-10000000000, 10000000000", "", 1,
     1},
    {"integer beyond 64 bits", "int v in -1e300 1e300", LS_OP_INT,
     "-9223372036854775808, 9223372036854775807", ""},
    {"semi-continuous", "semicont v in 2 10", LS_OP_FLOAT, "0.0, 10.0",
     "or(eq(v, 0.0), geq(v, 2.0))"},
    {"semi-continuous from zero", "semicont v in 0 10", LS_OP_FLOAT, "0.0, 10.0", ""},
    {"semi-continuous from below", "semicont v in -5 10", LS_OP_FLOAT, "-5.0, 10.0", ""},
    {"semi-integer", "semiint v in 2 inf", LS_OP_INT, "0.0, 1e+10", "or(eq(v, 0.0), geq(v, 2.0))",
     0, 1},
};

TEST(Variables, BecomeDecisions) {
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        LinkFixture fixture(c.declaration);
        fixture.startModel();
        const localsolver::LSExpression v = fixture.link.getVariable(0);
        EXPECT_EQ(v.getOperator(), c.op);
        EXPECT_EQ(v.getName(), "v");
        EXPECT_EQ(fixture.typedOperands(v), c.bounds);
        EXPECT_EQ(fixture.link.getVariable(0), v);
        const localsolver::LSModel model = fixture.link.solver->getModel();
        std::string constraints;
        for (std::int32_t i = 0; i < model.getNbConstraints(); ++i)
            constraints += (i > 0 ? " " : "") + fixture.typedText(model.getConstraint(i));
        EXPECT_EQ(constraints, c.constraints);
        EXPECT_EQ(fixture.link.nbLowerClamped, c.nbLowerClamped);
        EXPECT_EQ(fixture.link.nbUpperClamped, c.nbUpperClamped);
    }
}

TEST(Variables, AreNotMadeWhenNothingUsesThem) {
    LinkFixture fixture("cont unused ; cont x ; min x");
    fixture.setUp();
    EXPECT_FALSE(vex::isBuilt(fixture.link.variables[0]));
    EXPECT_TRUE(vex::isBuilt(fixture.link.variables[1]));
}

}  // namespace
