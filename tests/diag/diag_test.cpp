#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <random>
#include <sstream>

#include "diag/model_dump.hpp"
#include "diag/number_text.hpp"
#include "double/exchange.hpp"

/// What whole calls do not reach.

namespace {

using localsolver::LSExpression;

std::string printed(const char* format, double value) {
    char text[512];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

TEST(NumberText, IsWhatPrintfWritesInThePlainLocale) {
    std::mt19937_64 generator(20);
    for (int k = 0; k < 4000; ++k) {
        // Half of them short numbers, where digits are dropped.
        const double value = k % 2 == 0 ? std::bit_cast<double>(generator())
                                        : std::round(std::ldexp(1.0, k / 100)) / 1000 * (k % 5);
        if (std::isnan(value)) continue;
        ASSERT_EQ(vex::scientificText(value, 8, 15), printed("%15.8e", value));
        ASSERT_EQ(vex::generalText(value, 6), printed("%g", value));
        ASSERT_EQ(vex::generalText(value, 10), printed("%.10g", value));
    }
    EXPECT_EQ(vex::scientificText(std::nan(""), 8, 15), "            nan");
    EXPECT_EQ(vex::generalText(-HUGE_VAL, 6), "-inf");
}

TEST(ModelDump, NamesEveryOperator) {
    std::ostringstream stream;
    for (int op = -1; op <= 37; ++op) vex::writeOperatorName(stream, op) << ' ';
    EXPECT_EQ(
        stream.str(),
        "lsop-1 b x c sum sub prod max min eq neq geq leq gt lt if not and or xor abs dist "
        "div mod array at scalarprod ceil floor round sqrt log exp pow cos sin tan i lsop37 ");
}

TEST(ModelDump, FollowsDeepExpressionsAndStopsWhenTheStreamFails) {
    const localsolver::LocalSolver solver;
    const localsolver::LSModel model = solver.getModel();
    LSExpression e = model.createExpression(LS_OP_BOOL);
    constexpr std::size_t depth = 100000;
    for (std::size_t k = 0; k < depth; ++k) {
        const LSExpression operand = e;
        e = model.createExpression(LS_OP_NOT);
        e.addOperand(operand);
    }
    std::ostringstream stream;
    vex::writeExpression(stream, e);
    EXPECT_EQ(stream.str().size(), depth * std::string("not()").size() + 1);

    model.addObjective(e, LS_MINIMIZE);
    model.addConstraint(e);
    stream.setstate(std::ios::badbit);
    doubles::exchange().reset();
    vex::dumpModel(stream, model);
    vex::writeExpression(stream, e);
    EXPECT_LT(doubles::exchange().nbCalls(), 10);
}

}  // namespace
