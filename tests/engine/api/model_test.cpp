// Building, reading and closing a model through the C functions.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include "engine/api/solver_fixture.hpp"

namespace {

using namespace lstest;

struct BadModel {
    const char* what;
    std::function<void(ls_solver*)> build;
    int code;
    const char* text;
};

TEST(Model, IllFormedModelsAreRefusedByTheCallThatSeesIt) {
    const std::vector<BadModel> cases = {
        {"an unknown operator", [](ls_solver* s) { expression(s, 37); }, 3,
         "operator 37 does not exist, allowed are 0 to 36"},
        {"a constant without value", [](ls_solver* s) { expression(s, LS_OP_CONST); }, 3,
         "a constant needs a value, make it with ls_create_int_constant or "
         "ls_create_double_constant"},
        {"NaN", [](ls_solver* s) { constant(s, std::nan("")); }, 7,
         "NaN given, a number is needed"},
        {"an operand of a constant",
         [](ls_solver* s) { ls_expr_add_operand(s, constant(s, 1), 0); }, 3,
         "expression 0 (c) has 0 operands and takes no more"},
        {"a third side",
         [](ls_solver* s) {
             const int c = constant(s, 1);
             expression(s, LS_OP_LEQ, {c, c, c});
         },
         3, "expression 1 (leq) has 2 operands and takes no more"},
        {"a bound that is no constant",
         [](ls_solver* s) { expression(s, LS_OP_INT, {expression(s, LS_OP_BOOL)}); }, 3,
         "expression 0 (b) cannot bound decision 1: bounds are constants"},
        {"an array in a sum",
         [](ls_solver* s) { expression(s, LS_OP_SUM, {expression(s, LS_OP_ARRAY)}); }, 3,
         "operand 0 of expression 1 (sum) cannot be an array"},
        {"an index into a number", [](ls_solver* s) { expression(s, LS_OP_AT, {constant(s, 1)}); },
         3, "operand 0 of expression 1 (at) must be an array, not c"},
        {"an array as a constraint",
         [](ls_solver* s) { ls_add_constraint(s, expression(s, LS_OP_ARRAY)); }, 3,
         "expression 0 is an array and can be neither constraint nor objective"},
        {"too few operands",
         [](ls_solver* s) {
             expression(s, LS_OP_SUB, {constant(s, 1)});
             ls_close(s);
         },
         3, "expression 1 (sub) has 1 operands and needs at least 2"},
        {"arrays of two lengths",
         [](ls_solver* s) {
             const int c = constant(s, 1);
             const int a = expression(s, LS_OP_ARRAY, {c, c});
             const int b = expression(s, LS_OP_ARRAY, {c});
             expression(s, LS_OP_SCALARPROD, {a, b});
             ls_close(s);
         },
         3,
         "expression 3 (scalarprod) multiplies arrays of 2 and 1 operands, they must be of one "
         "length"},
        {"a sum that contains itself through a product",
         [](ls_solver* s) {
             const int sum = expression(s, LS_OP_SUM, {constant(s, 1)});
             const int top = expression(s, LS_OP_SUM);
             ls_expr_add_operand(s, sum, expression(s, LS_OP_PROD, {sum}));
             ls_expr_add_operand(s, top, sum);
             ls_close(s);
         },
         3, "expression 1 (sum) is an operand of itself, directly or through others"},
    };
    RecordingHook hook;
    for (const BadModel& c : cases) {
        const SolverHandle s = makeSolver();
        c.build(s.get());
        const Refused refused = hook.take();
        EXPECT_EQ(refused.code, c.code) << c.what;
        EXPECT_EQ(refused.text, c.text) << c.what;
        EXPECT_EQ(ls_get_state(s.get()), LS_STATE_MODELING) << c.what;
    }
}

TEST(Model, AModelRefusedForACycleReadsAsBefore) {
    RecordingHook hook;
    const SolverHandle s = makeSolver();
    const int half = constant(s.get(), 0.5);
    const int sum = expression(s.get(), LS_OP_SUM, {half, constant(s.get(), -7)});
    ls_expr_add_operand(s.get(), sum, expression(s.get(), LS_OP_ABS, {sum}));
    ls_close(s.get());
    EXPECT_EQ(hook.take().code, LS_ERROR_ARGUMENT);
    EXPECT_EQ(ls_expr_nb_operands(s.get(), sum), 3);
    EXPECT_EQ(ls_expr_get_operator(s.get(), ls_expr_get_operand(s.get(), sum, 2)), LS_OP_ABS);
    EXPECT_EQ(ls_expr_get_double_value(s.get(), half), 0.5);
    EXPECT_EQ(ls_expr_get_int_value(s.get(), ls_expr_get_operand(s.get(), sum, 1)), -7);
}

TEST(Model, ARefusedCloseCanBeMended) {
    RecordingHook hook;
    const SolverHandle s = makeSolver();
    const int c = constant(s.get(), 1);
    const int difference = expression(s.get(), LS_OP_SUB, {c});
    ls_close(s.get());
    EXPECT_EQ(hook.take().code, LS_ERROR_ARGUMENT);
    ls_expr_add_operand(s.get(), difference, c);
    ls_close(s.get());
    EXPECT_EQ(hook.take().code, -1);
    EXPECT_EQ(ls_get_state(s.get()), LS_STATE_CLOSED);
}

/// The graph as its readers see it: operator(operands) for every expression.
std::string graphOf(ls_solver* s) {
    std::string graph;
    for (int e = 0; e < ls_nb_expressions(s); ++e) {
        graph += std::to_string(ls_expr_get_operator(s, e)) + "(";
        for (int k = 0; k < ls_expr_nb_operands(s, e); ++k) {
            graph += std::to_string(ls_expr_get_operand(s, e, k)) + ",";
        }
        // Backwards too: reading in order is only the fast way.
        for (int k = ls_expr_nb_operands(s, e) - 1; k >= 0; --k) {
            graph += std::to_string(ls_expr_get_operand(s, e, k)) + ";";
        }
        graph += ")";
    }
    return graph;
}

TEST(Model, OperandsMayBeAppendedAtAnyTimeAndReadTheSameAfterClose) {
    const SolverHandle s = makeSolver();
    const int x = decision(s.get(), LS_OP_FLOAT, 0.0, 1.0);
    const int first = expression(s.get(), LS_OP_SUM, {x});
    const int second = expression(s.get(), LS_OP_PROD, {first});
    const int late = constant(s.get(), 7);
    for (int k = 0; k < 3; ++k) {
        ls_expr_add_operand(s.get(), first, late);
        ls_expr_add_operand(s.get(), second, x);
        EXPECT_EQ(ls_expr_get_operand(s.get(), first, k + 1), late);
    }
    const std::string open = graphOf(s.get());
    EXPECT_EQ(open, "2()2()1(0,1,1;0;)3(2,5,5,5,5;5;5;2;)5(3,2,2,2,2;2;2;3;)2()");
    ls_close(s.get());
    EXPECT_EQ(graphOf(s.get()), open);
    EXPECT_EQ(ls_expr_is_double(s.get(), first), 1);
    EXPECT_EQ(ls_expr_get_int_value(s.get(), late), 7);
}

TEST(Model, ConstantsKeepTheirExactValueAndType) {
    RecordingHook hook;
    const SolverHandle s = makeSolver();
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    const int i = constant(s.get(), largest);
    const int d = constant(s.get(), -0.1);
    const int infinite = constant(s.get(), -std::numeric_limits<double>::infinity());
    for (int pass = 0; pass < 2; ++pass) {
        EXPECT_EQ(ls_expr_get_int_value(s.get(), i), largest);
        EXPECT_EQ(ls_expr_get_double_value(s.get(), i), 0x1p63);
        EXPECT_EQ(ls_expr_get_double_value(s.get(), d), -0.1);
        EXPECT_TRUE(std::isinf(ls_expr_get_double_value(s.get(), infinite)));
        EXPECT_EQ(hook.take().code, -1);
        EXPECT_EQ(ls_expr_get_int_value(s.get(), d), 0);
        EXPECT_EQ(hook.take().text, "expression 1 is a double, ask for its double value");
        if (pass == 0) ls_close(s.get());
    }
}

TEST(Model, NamesAreLabelsAndTextsAreCutToTheBuffer) {
    const SolverHandle s = makeSolver();
    const int a = constant(s.get(), 1);
    const int b = constant(s.get(), 2);
    ls_expr_set_name(s.get(), b, "cost");
    ls_expr_set_name(s.get(), a, "first");
    ls_expr_set_name(s.get(), a, "cost");
    EXPECT_TRUE(ls_expr_is_named(s.get(), a));
    char text[4] = "???";
    EXPECT_EQ(ls_expr_get_name(s.get(), a, text, 3), 5) << "the terminator counts";
    EXPECT_STREQ(text, "co");
    EXPECT_EQ(ls_expr_get_name(s.get(), b, nullptr, 0), 5);
}

TEST(Model, AChainOfAMillionExpressionsClosesAndIsJudged) {
    RecordingHook hook;
    const SolverHandle s = makeSolver();
    const int x = decision(s.get(), LS_OP_INT, 1, 1);
    int top = x;
    for (int k = 0; k < 1'000'000; ++k) top = expression(s.get(), LS_OP_SUM, {top});
    ls_add_constraint(s.get(), top);
    ls_close(s.get());
    EXPECT_EQ(ls_expr_get_int_value(s.get(), top), 1);
    EXPECT_EQ(ls_get_solution_status(s.get()), LS_STATUS_FEASIBLE);
    EXPECT_EQ(hook.take().code, -1);
}

struct Start {
    const char* what;
    double lower;
    double upper;
    double wanted;
    double got;
};

TEST(Model, StartingValuesMoveIntoTheDomain) {
    constexpr double inf = std::numeric_limits<double>::infinity();
    const Start floats[] = {
        {"inside", -1.0, 4.0, 2.5, 2.5},
        {"below", -1.0, 4.0, -inf, -1.0},
        {"above", -1.0, 4.0, 1e300, 4.0},
        {"NaN, 0 inside", -1.0, 4.0, std::nan(""), 0.0},
        {"NaN, 0 below", 2.0, 4.0, std::nan(""), 2.0},
        {"fixed", 3.0, 3.0, 0.0, 3.0},
        {"empty", 4.0, -1.0, 0.0, 4.0},
    };
    for (const Start& c : floats) {
        const SolverHandle s = makeSolver();
        const int x = decision(s.get(), LS_OP_FLOAT, c.lower, c.upper);
        ls_close(s.get());
        ls_expr_set_double_value(s.get(), x, c.wanted);
        EXPECT_EQ(ls_expr_get_double_value(s.get(), x), c.got) << c.what;
    }
    const Start integers[] = {
        {"bounds are rounded inward", 0.5, 3.7, 0.0, 1.0},
        {"and not by halves", -3.7, -0.5, 0.0, -1.0},
        {"above", 0.5, 3.7, 9.0, 3.0},
        {"beyond 64 bits", -1e300, 1e300, -5.0, -5.0},
        {"no integer inside", 0.2, 0.8, 5.0, 1.0},
    };
    for (const Start& c : integers) {
        const SolverHandle s = makeSolver();
        const int x = decision(s.get(), LS_OP_INT, c.lower, c.upper);
        ls_close(s.get());
        ls_expr_set_int_value(s.get(), x, static_cast<std::int64_t>(c.wanted));
        EXPECT_EQ(ls_expr_get_int_value(s.get(), x), static_cast<std::int64_t>(c.got)) << c.what;
    }
}

TEST(Model, AnEmptyDomainMakesTheModelInconsistentAndEveryConstraintReadZero) {
    const SolverHandle s = makeSolver();
    decision(s.get(), LS_OP_INT, 3, 2);
    const int y = expression(s.get(), LS_OP_BOOL);
    const int holds = expression(s.get(), LS_OP_GEQ, {y, constant(s.get(), 0)});
    ls_add_constraint(s.get(), holds);
    closeWithLimits(s.get(), 0, 0);
    EXPECT_EQ(ls_get_solution_status(s.get()), LS_STATUS_INCONSISTENT);
    ls_solve(s.get());
    EXPECT_EQ(ls_get_solution_status(s.get()), LS_STATUS_INCONSISTENT);
    EXPECT_EQ(ls_expr_get_int_value(s.get(), holds), 0);
    EXPECT_EQ(ls_expr_get_int_value(s.get(), y), 0);
}

TEST(Model, AConstraintThatIsNotDefinedReadsZero) {
    const SolverHandle s = makeSolver();
    const int x = decision(s.get(), LS_OP_FLOAT, -5.0, -1.0);
    const int root = expression(s.get(), LS_OP_SQRT, {x});
    const int row = expression(s.get(), LS_OP_GEQ, {root, constant(s.get(), 0)});
    ls_add_constraint(s.get(), row);
    ls_add_constraint(s.get(), root);
    closeWithLimits(s.get(), 1, 1000);
    ls_solve(s.get());
    EXPECT_LE(ls_get_solution_status(s.get()), LS_STATUS_INFEASIBLE);
    EXPECT_EQ(ls_expr_get_int_value(s.get(), row), 0);
    EXPECT_EQ(ls_expr_get_double_value(s.get(), root), 0.0);
}

}  // namespace
