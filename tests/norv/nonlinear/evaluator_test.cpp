#include "nonlinear/evaluator.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "norv/nonlinear/assembler.hpp"

namespace norv {
namespace {

constexpr std::int32_t nbVariables = 3;

ListCheck check(const Assembled& code) {
    return checkInstructions(code.list.opcodes, code.list.fields, nbVariables,
                             static_cast<std::int32_t>(code.pool.size()));
}

Quantity valueAt(const std::string& text, std::vector<double> point) {
    Assembled code = assemble(text);
    const ListCheck verdict = check(code);
    EXPECT_EQ(verdict.fault, "") << text;
    if (!verdict.fault.empty()) return {};
    code.list.depth = verdict.depth;
    Evaluator evaluator;
    return evaluator.evaluate(code.list, code.pool, point);
}

TEST(Evaluator, RelationsAreExactAndLogicTakesNonzeroForTrue) {
    const struct {
        const char* function;
        double x, y, value;
    } binary[] = {
        {"min", 2, 3, 2},
        {"max", 2, 3, 3},
        {"power", -2, 3, -8},
        {"power", 0, 0, 1},
        {"rpower", 4, 0.5, 2},
        {"cvpower", 2, 3, 8},
        {"vcpower", 9, 1.5, 27},
        {"div", 7, 2, 3.5},
        {"signpower", -4, 0.5, -2},
        {"signpower", 0, 0.5, 0},
        {"booland", 2, -1, 1},
        {"booland", 2, 0, 0},
        {"boolor", 0, 0, 0},
        {"boolor", 0, 0.1, 1},
        {"boolxor", 2, 3, 0},
        {"boolxor", 0, 3, 1},
        {"boolimp", 1, 0, 0},
        {"boolimp", 0, 0, 1},
        {"boolimp", 2, 5, 1},
        {"booleqv", 2, 3, 0},
        {"booleqv", 0, 0, 1},
        {"relopeq", 1, 1, 1},
        {"relopeq", 1, 1 + 1e-15, 0},
        {"relopne", 1, 1 + 1e-15, 1},
        {"relopgt", 1, 1, 0},
        {"relopge", 1, 1, 1},
        {"relopge", 1, 1 + 1e-15, 0},
        {"reloplt", 1, 1, 0},
        {"reloplt", 1, 1 + 1e-15, 1},
        {"relople", 1 + 1e-15, 1, 0},
    };
    for (const auto& each : binary) {
        const Quantity result = valueAt(
            std::string("nlPushV 1, nlPushV 2, nlCallArg2 ") + each.function, {each.x, each.y, 0});
        EXPECT_EQ(result.value, each.value) << each.function << ' ' << each.x << ' ' << each.y;
        EXPECT_EQ(result.nbErrors, 0) << each.function << ' ' << each.x << ' ' << each.y;
    }
}

TEST(Evaluator, CallsWithManyArgumentsTakeTheAnnouncedCount) {
    const struct {
        const char* code;
        double value;  // at (2, 3, 6)
    } cases[] = {
        {"nlPushV 1, nlPushV 2, nlPushV 3, nlFuncArgN 3, nlCallArgN edist", 7},
        {"nlUMinV 1, nlCallArg1 edist", 2},
        {"nlPushV 1, nlFuncArgN 0, nlCallArgN edist", 2},
        {"nlPushV 1, nlPushI #5, nlPushI #7, nlPushI #11, nlFuncArgN 4, nlCallArgN poly", 63},
        {"nlPushV 1, nlPushI #5, nlCallArg2 poly", 5},
        {"nlPushV 1, nlCallArg1 poly", 0},
        {"nlFuncArgN 0, nlCallArgN poly", 0},
        {"nlPushV 1, nlPushV 2, nlPushV 3, nlFuncArgN 3, nlCallArgN ifthen", 3},
        {"nlPushZero, nlPushV 2, nlPushV 3, nlFuncArgN 3, nlCallArgN ifthen", 6},
        {"nlFuncArgN 0, nlCallArgN pi, nlSubI #3.141592653589793", 0},
        // The count stays in force for other functions.
        {"nlPushV 1, nlPushV 2, nlPushV 3, nlFuncArgN 2, nlCallArgN max, nlCallArgN min", 2},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(valueAt(each.code, {2, 3, 6}).value, each.value) << each.code;
    }
}

TEST(Evaluator, CountsErrorsOfWhatHasASay) {
    const struct {
        const char* code;
        bool fails;  // at (-1, 0, 1e200)
    } cases[] = {
        {"nlPushV 1, nlCallArg1 log", true},
        {"nlPushV 2, nlCallArg1 log", true},
        {"nlPushV 1, nlCallArg1 log10", true},
        {"nlPushV 2, nlCallArg1 log2", true},
        {"nlPushV 1, nlCallArg1 sqrt", true},
        {"nlPushV 3, nlDivV 2", true},
        {"nlPushV 3, nlDivI #0", true},
        {"nlPushV 2, nlPushV 2, nlCallArg2 div", true},
        {"nlPushV 3, nlCallArg1 exp", true},
        {"nlPushV 3, nlMulV 3", true},
        {"nlPushV 3, nlCallArg1 sqr", true},
        {"nlPushV 2, nlPushV 1, nlCallArg2 power", true},
        {"nlPushV 1, nlPushI #0.5, nlCallArg2 vcpower", true},
        // An error does not heal on the way: 1 / (1 / 0), the negation of log(-1) > 0.
        {"nlPushI #1, nlPushI #1, nlDivV 2, nlDiv", true},
        {"nlPushV 1, nlCallArg1 log, nlPushZero, nlCallArg2 relopgt, nlCallArg1 boolnot", true},
        {"nlPushV 1, nlCallArg1 log, nlPushV 2, nlCallArg1 log, nlCallArg2 max", true},
        // The base of a polynomial without a power, the arguments of one without coefficients.
        {"nlPushV 1, nlCallArg1 log, nlPushV 2, nlCallArg2 poly", false},
        {"nlPushV 1, nlCallArg1 log, nlCallArg1 poly", false},
        // The branch not taken, and what a false or true side decides alone.
        {"nlPushI #1, nlPushV 2, nlPushV 1, nlCallArg1 log, nlFuncArgN 3, nlCallArgN ifthen",
         false},
        {"nlPushV 2, nlPushV 2, nlPushV 1, nlCallArg1 log, nlFuncArgN 3, nlCallArgN ifthen", true},
        {"nlPushV 2, nlPushV 1, nlCallArg1 log, nlCallArg2 booland", false},
        {"nlPushV 1, nlCallArg1 log, nlPushV 3, nlCallArg2 boolor", false},
        {"nlPushV 1, nlCallArg1 log, nlPushV 2, nlCallArg2 boolor", true},
        {"nlPushV 2, nlPushV 1, nlCallArg1 log, nlCallArg2 boolimp", false},
    };
    for (const auto& each : cases) {
        const Quantity result = valueAt(each.code, {-1, 0, 1e200});
        EXPECT_EQ(result.nbErrors > 0, each.fails) << each.code;
    }
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(valueAt("nlPushV 1", {nan, 0, 0}).nbErrors, 1);
    EXPECT_EQ(valueAt("nlPushI #1, nlDivV 1", {1.0 / 0.0, 0, 0}).nbErrors, 0);
}

TEST(InstructionCheck, SaysWhatIsWrongWhere) {
    const struct {
        const char* code;
        const char* fault;
    } cases[] = {
        {"nlPushV 4", "instruction 1 of 1: nlPushV names variable 4, there are 3, counted from 1"},
        {"nlUMinV 0", "instruction 1 of 1: nlUMinV names variable 0, there are 3, counted from 1"},
        {"nlPushV 1, nlMulI 1",
         "instruction 2 of 2: nlMulI names pool entry 1, there are 0, counted from 1"},
        {"nlPushV 1, nlAdd", "instruction 2 of 2: nlAdd takes 2 values, there are 1"},
        {"nlAddV 1", "instruction 1 of 1: nlAddV takes 1 values, there are 0"},
        {"nlPushV 1, nlMulIAdd #2", "instruction 2 of 2: nlMulIAdd takes 2 values, there are 1"},
        {"nlPushV 1, nlEnd", "instruction 2 of 2: nlEnd has no place in a model's code"},
        {"nlPushV 1, 31", "instruction 2 of 2: there is no opcode 31"},
        {"nlPushV 1, -1", "instruction 2 of 2: there is no opcode -1"},
        {"nlPushV 1, nlCallArg1 17",
         "instruction 2 of 2: nlCallArg1 names function 17, which this host does not evaluate"},
        {"nlPushV 1, nlCallArg1 113",
         "instruction 2 of 2: nlCallArg1 names function 113, which this host does not evaluate"},
        {"nlPushV 1, nlCallArg1 min",
         "instruction 2 of 2: min is called with 1 arguments, it has 2"},
        {"nlPushV 1, nlPushV 1, nlPushV 1, nlFuncArgN 3, nlCallArgN max",
         "instruction 5 of 5: max is called with 3 arguments, it has 2"},
        {"nlPushV 1, nlCallArg2 min", "instruction 2 of 2: min takes 2 values, there are 1"},
        {"nlPushV 1, nlCallArgN edist",
         "instruction 2 of 2: edist is called with no count of arguments announced"},
        {"nlPushV 1, nlCallArg1 edist, nlCallArgN edist",
         "instruction 3 of 3: edist is called with no count of arguments announced"},
        {"nlFuncArgN -2, nlPushV 1", "instruction 1 of 2: nlFuncArgN announces a negative count"},
        {"nlPushV 1, nlPushV 2", "the instructions leave 2 values, not one"},
        {"nlHeader, nlStore", "the instructions leave 0 values, not one"},
    };
    for (const auto& each : cases) EXPECT_EQ(check(assemble(each.code)).fault, each.fault);
}

TEST(InstructionList, LinearTermsGoBeforeTheStore) {
    Assembled code = assemble("nlHeader, nlPushV 1, nlCallArg1 sqr, nlStore");
    code.list.depth = check(code).depth;
    code.pool = {2.5};
    appendLinearTerm(code.list, 1, 2.5, 1);
    appendLinearTerm(code.list, 0, -1.0, 0);
    appendLinearTerm(code.list, 2, 1.0, 0);
    EXPECT_EQ(code.list.opcodes, (std::vector<std::int32_t>{nlHeader, nlPushV, nlCallArg1, nlPushV,
                                                            nlMulIAdd, nlSubV, nlAddV, nlStore}));
    EXPECT_EQ(check(code).depth, code.list.depth);
    EXPECT_EQ(Evaluator().evaluate(code.list, code.pool, std::vector<double>{3, 2, 7}).value, 18.0);
}

}  // namespace
}  // namespace norv
