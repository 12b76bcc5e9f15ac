#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <sstream>

#include "hostapi/instruction_code.hpp"
#include "translate/link_fixture.hpp"

namespace {

using localsolver::LSExpression;

std::optional<std::int32_t> numberIn(const auto& table, const std::string& name) {
    const auto row = std::ranges::find_if(table, [&](auto& each) { return each.name == name; });
    if (row == table.end()) return {};
    return static_cast<std::int32_t>(row->code);
}

/// An instruction list as text: opcodes by name, each with its field where it has one; fields of
/// calls by function name. Unknown words are numbers.
struct InstructionList {
    explicit InstructionList(const std::string& text) {
        std::istringstream words(text);
        for (std::string word; words >> word;) {
            if (const auto opcode = numberIn(hostapi::opcodeTable, word)) {
                opcodes.push_back(*opcode);
                fields.push_back(0);
            } else {
                const auto function = numberIn(hostapi::functionTable, word);
                fields.back() = function ? *function : std::stoi(word);
            }
        }
    }
    std::vector<std::int32_t> opcodes, fields;
};

constexpr double pool[] = {2.0, 2.5, 1.0, 3.0, 0.0, -0x1p63};

LSExpression convert(LinkFixture& fixture, const InstructionList& list) {
    return fixture.link.convertExpression(static_cast<std::int32_t>(list.opcodes.size()),
                                          list.opcodes.data(), list.fields.data(), pool);
}

struct Case {
    const char* list;
    const char* expected;
};

void checkCases(const char* instance, const std::vector<Case>& cases) {
    for (const Case& c : cases) {
        SCOPED_TRACE(c.list);
        LinkFixture fixture(instance);
        fixture.startModel();
        EXPECT_EQ(fixture.typedText(convert(fixture, InstructionList(c.list))), c.expected);
    }
}

constexpr const char* named = "cont x ; cont y ; cont z";
constexpr const char* unnamed = "cont x ; cont y ; cont z ; names off";

TEST(InstructionConverter, TranslatesEveryOpcode) {
    checkCases(named, {
                          {"nlNoOp nlHeader 7 nlPushV 1 nlStore 3", "x"},
                          {"nlPushI 1", "2"},
                          {"nlPushI 2", "2.5"},
                          {"nlPushZero", "0"},
                          {"nlPushV 1 nlPushV 2 nlAdd", "sum(y, x)"},
                          {"nlPushV 1 nlPushV 2 nlAdd nlPushV 3 nlAdd", "sum(sum(y, x), z)"},
                          {"nlPushV 1 nlAddV 2", "sum(x, y)"},
                          {"nlPushV 1 nlAddI 3 nlAddI 1", "sum(x, 1, 2)"},
                          {"nlPushV 1 nlPushV 2 nlSub", "sub(x, y)"},
                          {"nlPushV 1 nlSubV 2", "sub(x, y)"},
                          {"nlPushV 1 nlSubI 2", "sum(x, -2.5)"},
                          {"nlPushV 1 nlSubI 3 nlSubI 1", "sum(sum(x, -1), -2)"},
                          {"nlPushV 1 nlSubI 6", "sum(x, 9223372036854775808.0)"},
                          {"nlPushV 1 nlPushV 2 nlMul", "prod(y, x)"},
                          {"nlPushV 1 nlMulV 2 nlMulV 3", "prod(x, y, z)"},
                          {"nlPushV 1 nlMulI 1", "prod(x, 2.0)"},
                          {"nlPushI 4 nlMulI 1", "6"},
                          {"nlPushV 1 nlPushV 2 nlDiv", "div(x, y)"},
                          {"nlPushV 1 nlDivV 2", "div(x, y)"},
                          {"nlPushV 1 nlDivI 1", "prod(x, 0.5)"},
                          {"nlPushV 1 nlDivI 5", "prod(x, inf)"},
                          {"nlPushV 1 nlUMin", "prod(x, -1.0)"},
                          {"nlUMinV 3", "prod(z, -1)"},
                          {"nlPushV 1 nlPushV 2 nlMulIAdd 2", "sum(prod(y, 2.5), x)"},
                      });
}

TEST(InstructionConverter, NeverExtendsWhatRowsShare) {
    checkCases(unnamed, {
                            {"nlPushV 1 nlPushV 2 nlAdd nlPushV 3 nlAdd", "sum(y, x, z)"},
                            {"nlPushV 1 nlCallArg1 sqr", "prod(x, x)"},
                            {"nlPushV 1 nlPushV 1 nlAdd", "prod(x, 2.0)"},
                            {"nlPushV 1 nlMulV 2 nlCallArg1 sqr", "prod(x, y, x, y)"},
                        });
}

TEST(InstructionConverter, TranslatesEveryFunction) {
    checkCases(
        named,
        {
            {"nlPushV 1 nlCallArg1 ceil", "ceil(x)"},
            {"nlPushV 1 nlCallArg1 floor", "floor(x)"},
            {"nlPushV 1 nlCallArg1 round", "round(x)"},
            {"nlPushV 1 nlCallArg1 exp", "exp(x)"},
            {"nlPushV 1 nlCallArg1 log", "log(x)"},
            {"nlPushV 1 nlCallArg1 log10", "prod(log(x), 0.43429448190325176)"},
            {"nlPushV 1 nlCallArg1 log2", "prod(log(x), 1.4426950408889634)"},
            {"nlPushV 1 nlCallArg1 sqrt", "sqrt(x)"},
            {"nlPushV 1 nlCallArg1 abs", "abs(x)"},
            {"nlPushV 1 nlCallArg1 cos", "cos(x)"},
            {"nlPushV 1 nlCallArg1 sin", "sin(x)"},
            {"nlPushV 1 nlCallArg1 tan", "tan(x)"},
            {"nlPushV 1 nlCallArg1 boolnot", "not(x)"},
            {"nlPushV 1 nlCallArg1 sqr", "prod(x, x)"},
            {"nlPushV 1 nlPushV 2 nlCallArg2 min", "min(y, x)"},
            {"nlPushV 1 nlPushV 2 nlCallArg2 max nlPushV 3 nlCallArg2 max", "max(y, x, z)"},
            {"nlPushV 1 nlPushV 2 nlCallArg2 power", "pow(x, y)"},
            {"nlPushV 1 nlPushI 1 nlCallArg2 vcpower", "pow(x, 2)"},
            {"nlPushV 1 nlPushI 3 nlCallArg2 rpower", "x"},
            {"nlPushI 1 nlPushV 1 nlCallArg2 cvpower", "pow(2, x)"},
            {"nlPushV 1 nlPushI 1 nlCallArg2 signpower", "prod(x, pow(abs(x), sub(2, 1)))"},
            {"nlFuncArgN 0 nlCallArgN pi", "3.141592653589793"},
            {"nlPushV 1 nlPushV 2 nlCallArg2 booland", "and(x, y)"},
            {"nlPushV 1 nlPushV 2 nlCallArg2 boolor nlPushV 3 nlCallArg2 boolor", "or(x, y, z)"},
            {"nlPushV 1 nlPushV 2 nlCallArg2 boolxor", "xor(x, y)"},
            {"nlPushV 1 nlPushV 2 nlCallArg2 boolimp", "or(not(x), y)"},
            {"nlPushV 1 nlPushV 2 nlCallArg2 booleqv", "eq(x, y)"},
            {"nlPushV 1 nlPushV 2 nlCallArg2 relopeq", "eq(x, y)"},
            {"nlPushV 1 nlPushV 2 nlCallArg2 relopgt", "gt(x, y)"},
            {"nlPushV 1 nlPushV 2 nlCallArg2 relopge", "geq(x, y)"},
            {"nlPushV 1 nlPushV 2 nlCallArg2 reloplt", "lt(x, y)"},
            {"nlPushV 1 nlPushV 2 nlCallArg2 relople", "leq(x, y)"},
            {"nlPushV 1 nlPushV 2 nlCallArg2 relopne", "neq(x, y)"},
            {"nlPushV 1 nlPushV 2 nlCallArg2 div", "div(x, y)"},
            {"nlPushV 1 nlPushV 2 nlPushV 3 nlFuncArgN 3 nlCallArgN ifthen", "if(x, y, z)"},
            {"nlPushV 1 nlPushV 2 nlPushV 3 nlFuncArgN 3 nlCallArgN edist",
             "sqrt(sum(pow(z, 2.0), pow(y, 2.0), pow(x, 2.0)))"},
            {"nlPushV 1 nlCallArg1 edist", "sqrt(pow(x, 2.0))"},
            {"nlPushV 1 nlPushV 2 nlPushV 3 nlFuncArgN 3 nlCallArgN min nlAdd",
             "sum(min(z, y), x)"},
            {"nlPushV 1 nlPushI 1 nlPushI 2 nlPushV 2 nlPushI 4 nlFuncArgN 5 nlCallArgN poly",
             "sum(prod(3, pow(x, 3)), prod(y, pow(x, 2)), prod(2.5, x), 2)"},
            {"nlPushV 1 nlPushV 2 nlCallArg2 poly", "sum(y)"},
            {"nlPushV 1 nlCallArg1 poly", "0"},
            {"nlFuncArgN 0 nlCallArgN poly", "0"},
        });
}

TEST(InstructionConverter, RefusesWhatItCannotExpress) {
    const Case cases[] = {
        {"nlPushV 1 nlCallArg1 arctan", "Unsupported NORV function arctan"},
        {"nlPushV 1 nlPushV 2 nlCallArg2 mod", "Unsupported NORV function mod"},
        {"nlPushV 1 nlCallArg1 mapval", "Unsupported NORV function mapval"},
        {"nlPushV 1 nlCallArg1 dummy", "Unsupported NORV function dummy"},
        {"nlPushV 1 nlCallArg1 113", "Unsupported NORV function 113"},
        {"nlPushV 1 nlCallArg1 -1", "Unsupported NORV function -1"},
        {"nlPushV 1 nlEnd", "Unsupported NORV opcode nlEnd"},
        {"nlStackIn", "Unsupported NORV opcode nlStackIn"},
        {"nlPushV 0",
         "Malformed NORV instruction list at instruction 0: variable number 0, expected 1 or "
         "more."},
        {"nlNoOp nlPushI -3",
         "Malformed NORV instruction list at instruction 1: pool entry -3, expected 1 or more."},
        {"nlPushV 1 nlAdd",
         "Malformed NORV instruction list at instruction 1: an operand is missing, the stack is "
         "empty."},
        {"nlNoOp", "Malformed NORV instruction list at instruction 1: the list leaves no value."},
        {"nlPushV 1 nlPushV 2 nlFuncArgN 2 nlCallArgN edist nlCallArgN poly",
         "Malformed NORV instruction list at instruction 4: poly without an announced argument "
         "count."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.list);
        LinkFixture fixture(named);
        fixture.startModel();
        try {
            static_cast<void>(convert(fixture, InstructionList(c.list)));
            ADD_FAILURE() << "no exception";
        } catch (const localsolver::LSException& error) {
            EXPECT_STREQ(error.what(), c.expected);
            EXPECT_EQ(error.getErrorCode(), LS_ERROR_CALLER);
            EXPECT_EQ(error.getFunctionName(), "NorvLocalSolver::convertExpression");
        }
        // What the failed list left on the stack must not reach the next one.
        EXPECT_EQ(fixture.typedText(convert(fixture, InstructionList("nlPushV 2"))), "y");
    }
}

}  // namespace
