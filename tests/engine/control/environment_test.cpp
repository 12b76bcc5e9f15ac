// Texts of the solver and the environment file, whole.

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <limits>
#include <sstream>

#include "engine/api/solver_fixture.hpp"

namespace {

using namespace lstest;

std::string contentOf(const std::string& fileName) {
    std::ifstream file(fileName, std::ios::binary);
    std::stringstream content;
    content << file.rdbuf();
    return content.str();
}

SolverHandle makeNamedModel() {
    SolverHandle s = makeSolver();
    const int x = decision(s.get(), LS_OP_FLOAT, 0.1, 1e300);
    const int b = expression(s.get(), LS_OP_BOOL);
    const int term = expression(s.get(), LS_OP_PROD, {x, constant(s.get(), 3.0)});
    ls_expr_set_name(s.get(), x, "a \"b\"\n\\");
    ls_add_constraint(s.get(),
                      expression(s.get(), LS_OP_OR,
                                 {b, constant(s.get(), -std::numeric_limits<double>::infinity())}));
    ls_add_objective(s.get(), term, LS_MINIMIZE);
    ls_add_objective(s.get(), b, LS_MAXIMIZE);
    ls_set_nb_threads(s.get(), 2);
    ls_set_double_objective_threshold(s.get(), 1, 1.0);
    closeWithLimits(s.get(), 60, INT64_MAX);
    return s;
}

TEST(Environment, TheFileHoldsModelParametersAndPhases) {
    const SolverHandle s = makeNamedModel();
    const std::string fileName = ::testing::TempDir() + "environment_test.txt";
    ls_save_environment(s.get(), fileName.c_str());
    EXPECT_EQ(contentOf(fileName),
              "localsolver-environment 1\n"
              "expressions 8\n"
              "0 c 0.1\n"
              "1 c 1e+300\n"
              "2 x 0 1 \"a \\\"b\\\"\\x0a\\\\\"\n"
              "3 b\n"
              "4 c 3.0\n"
              "5 prod 2 4\n"
              "6 c -inf\n"
              "7 or 3 6\n"
              "constraints 1\n"
              "7\n"
              "objectives 2\n"
              "minimize 5\n"
              "maximize 3\n"
              "parameters\n"
              "threads 2\n"
              "seed 0\n"
              "annealing-level 1\n"
              "iterations-between-ticks 10000\n"
              "seconds-between-ticks 1\n"
              "verbosity 0\n"
              "threshold 1 1.0\n"
              "phases 1\n"
              "time-limit 60 iteration-limit 9223372036854775807\n"
              "end\n");
    std::remove(fileName.c_str());
}

TEST(Environment, AFullDiskIsReported) {
    if (!std::ofstream("/dev/full").is_open()) GTEST_SKIP();
    RecordingHook hook;
    const SolverHandle s = makeNamedModel();
    ls_save_environment(s.get(), "/dev/full");
    EXPECT_EQ(hook.take().text, "cannot write \"/dev/full\": No space left on device");
}

TEST(Environment, TheDescriptionGivesSizesParametersAndLimits) {
    const SolverHandle s = makeNamedModel();
    EXPECT_EQ(text([&](char* t, int n) { return ls_solver_to_string(s.get(), t, n); }),
              "model: 2 decisions (1 float, 0 integers, 1 boolean), 1 constraint, 2 objectives, "
              "8 expressions, 6 operands\n"
              "parameters: threads 2, seed 0, annealing level 1, iterations between ticks 10000, "
              "seconds between ticks 1\n"
              "threshold of objective 2: 1\n"
              "limits: 60 seconds, no iteration limit");
    EXPECT_EQ(text([&](char* t, int n) { return ls_stats_info(s.get(), t, n); }),
              "0 moves, 0 accepted, 0 improving");
    EXPECT_EQ(text([&](char* t, int n) { return ls_solver_info(s.get(), t, n); }),
              "0.0 s, 0 iterations, feasible, objective 0.30000000000000004 | 0");
    EXPECT_NE(text([](char* t, int n) { return ls_info(t, n); }).find("built-in engine"),
              std::string::npos);
}

}  // namespace
