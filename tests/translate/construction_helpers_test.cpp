#include <gtest/gtest.h>

#include <limits>

#include "translate/link_fixture.hpp"

namespace {

using localsolver::LSExpression;

constexpr bool own = true;
constexpr bool shared = false;
const LSExpression none;

/// The helpers under short names, on a model in the making with three float decisions.
struct Builder {
    explicit Builder(const char* instance) : fixture(instance) {
        fixture.startModel();
        x = link.getVariable(0);
        y = link.getVariable(1);
        z = link.getVariable(2);
    }

    LSExpression c(double value) { return link.makeConstant(value); }
    LSExpression scale(LSExpression e, bool extendable, double k) {
        return link.scaleExpression(e, extendable, k);
    }
    LSExpression add(double a, LSExpression e, bool eOwn, double b, LSExpression f, bool fOwn,
                     double constant) {
        return link.makeLinearCombination(a, e, eOwn, b, f, fOwn, constant);
    }
    LSExpression flat(ls_operator op, LSExpression e, bool eOwn, LSExpression f, bool fOwn) {
        return link.makeFlatExpression(op, e, eOwn, f, fOwn);
    }
    LSExpression node(ls_operator op, std::initializer_list<LSExpression> operands) {
        const LSExpression e = link.solver->getModel().createExpression(op);
        for (const LSExpression operand : operands) e.addOperand(operand);
        return e;
    }
    LSExpression prod() { return node(LS_OP_PROD, {x, y}); }

    void expect(const char* what, LSExpression built, const char* text) const {
        EXPECT_EQ(fixture.typedText(built), text) << what;
    }

    LinkFixture fixture;
    vex::NorvLocalSolver& link = fixture.link;
    LSExpression x, y, z;
};

constexpr const char* named = "cont x ; cont y ; cont z";
constexpr const char* unnamed = "cont x ; cont y ; cont z ; names off";

TEST(ConstructionHelpers, KeepConstantsIntegerWhenTheyAre) {
    Builder m(named);
    m.expect("whole", m.c(3.0), "3");
    m.expect("minus zero", m.c(-0.0), "0");
    m.expect("fraction", m.c(2.5), "2.5");
    m.expect("beyond integers", m.c(1e300), "1e+300");
    m.expect("the first double beyond integers", m.c(0x1p63), "9223372036854775808.0");
    m.expect("the lowest integer", m.c(-0x1p63), "-9223372036854775808");
    m.expect("infinity", m.c(std::numeric_limits<double>::infinity()), "inf");
}

TEST(ConstructionHelpers, ScaleFoldingConstantsAndExtendingOwnProducts) {
    Builder m(named);
    m.expect("by one", m.scale(m.x, own, 1.0), "x");
    m.expect("by zero", m.scale(m.x, own, 0.0), "0");
    m.expect("a decision", m.scale(m.x, own, 2.0), "prod(x, 2.0)");
    m.expect("an integer by a whole number", m.scale(m.c(3), own, 2.0), "6");
    m.expect("an integer by a fraction", m.scale(m.c(3), own, 0.5), "1.5");
    m.expect("a double to a whole number", m.scale(m.c(2.5), own, 2.0), "5");
    m.expect("the result is registered again", m.scale(m.scale(m.c(3), own, 0.5), own, 4.0), "6");
    const auto largest = m.link.makeIntConstant(std::numeric_limits<std::int64_t>::max());
    m.expect("an integer beyond the range", m.scale(largest, own, 2.0), "18446744073709551616.0");
    m.expect("an own product", m.scale(m.prod(), own, 3.0), "prod(x, y, 3.0)");
    m.expect("a shared product", m.scale(m.prod(), shared, 3.0), "prod(prod(x, y), 3.0)");
    const LSExpression product = m.prod();
    product.setName("p");
    m.expect("a named product", m.scale(product, own, 3.0), "prod(prod(x, y), 3.0)");
}

TEST(ConstructionHelpers, CombineLinearly) {
    Builder m(named);
    const auto sum = [&](std::initializer_list<LSExpression> e) { return m.node(LS_OP_SUM, e); };
    m.expect("one decision twice", m.add(2, m.x, own, 3, m.x, own, 1), "sum(prod(x, 5.0), 1)");
    m.expect("constants only", m.add(1, m.c(2), own, 1, m.c(3.5), own, 0), "5.5");
    m.expect("one operand alone", m.add(1, m.x, own, 1, none, own, 0), "x");
    m.expect("a constant folds into the other", m.add(2, m.c(3), own, -1, m.y, own, 0.5),
             "sum(prod(y, -1.0), 6.5)");
    m.expect("a name clears the flag", m.add(1, m.x, own, 1, sum({m.y}), own, 0), "sum(sum(y), x)");
    m.expect("a sum comes first and grows by the other's flag",
             m.add(1, m.x, shared, 1, sum({m.y}), own, 0), "sum(sum(y), x)");
    m.expect("a shared sum is copied", m.add(1, sum({m.x}), own, 1, sum({m.y, m.z}), shared, 2),
             "sum(x, y, z, 2)");
    m.expect("a sum in the empty place brings its flag",
             m.add(1, m.c(1), own, 1, sum({m.y}), shared, 0), "sum(sum(y), 1)");
    m.expect("a factor of zero", m.add(0, m.x, own, 1, m.y, own, 0), "sum(0, y)");
}

TEST(ConstructionHelpers, ExtendASumWhenNoNameForbidsIt) {
    const auto addThree = [](Builder& m) {  // in the order of an evaluation stack
        return m.add(1, m.z, own, 1, m.add(1, m.y, own, 1, m.x, own, 0), own, 0);
    };
    Builder withNames(named);
    withNames.expect("with names", addThree(withNames), "sum(sum(y, x), z)");
    Builder withoutNames(unnamed);
    withoutNames.expect("without names", addThree(withoutNames), "sum(y, x, z)");
}

TEST(ConstructionHelpers, FlattenAssociativeOperators) {
    Builder m(named);
    const auto min = [&](std::initializer_list<LSExpression> e) { return m.node(LS_OP_MIN, e); };
    m.expect("two decisions", m.flat(LS_OP_MAX, m.x, own, m.y, own), "max(x, y)");
    m.expect("a decision with itself", m.flat(LS_OP_MIN, m.x, own, m.x, own), "min(x, x)");
    const LSExpression p = m.prod();
    m.expect("a product with itself", m.flat(LS_OP_PROD, p, own, p, own), "prod(x, y, x, y)");
    m.expect("two own lists", m.flat(LS_OP_MIN, min({m.x}), own, min({m.y}), own), "min(x, y)");
    m.expect("two lists, the second is own",
             m.flat(LS_OP_MIN, min({m.x}), shared, min({m.y, m.z}), own), "min(y, z, x)");
    m.expect("two shared lists", m.flat(LS_OP_MIN, min({m.x}), shared, min({m.y}), shared),
             "min(min(x), min(y))");
    m.expect("a list behind", m.flat(LS_OP_MIN, m.x, own, min({m.y}), own), "min(y, x)");
    m.expect("another operator's list", m.flat(LS_OP_XOR, min({m.x}), own, m.y, own),
             "xor(min(x), y)");
}

TEST(ConstructionHelpers, LeaveWhatStandsForAVariableAlone) {
    Builder m("cont a ; cont b ; cont c ; cont x ; names off ; def : x - a = 1");
    m.link.definedVariables[3] = 0;
    const LSExpression x = m.link.getVariable(3);
    const std::string definition = "prod(sum(prod(a, -1.0), -1), -1.0)";
    m.expect("scaled", m.scale(x, own, 2.0), ("prod(" + definition + ", 2.0)").c_str());
    m.expect("multiplied", m.flat(LS_OP_PROD, x, own, x, own),
             ("prod(" + definition + ", " + definition + ")").c_str());
    m.expect("itself", x, definition.c_str());
}

TEST(ConstructionHelpers, RefuseToInventTheValueOfAConstant) {
    Builder m(named);
    const LSExpression foreign = m.link.solver->getModel().createConstant(std::int64_t{7});
    try {
        (void)m.link.getConstantValue(foreign);
        FAIL() << "no exception";
    } catch (const localsolver::LSException& error) {
        EXPECT_EQ(error.getErrorCode(), LS_ERROR_CALLER);
        EXPECT_EQ(error.getFunctionName(), "NorvLocalSolver::getConstantValue");
    }
}

}  // namespace
