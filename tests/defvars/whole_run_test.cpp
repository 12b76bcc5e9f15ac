#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "host/operations.hpp"
#include "link/entry_points.hpp"
#include "norv/environment.hpp"
#include "norv/model.hpp"
#include "norv/model_builder.hpp"

/// Chains of definitions from the host's model to its levels: entry points, link, built-in engine.

namespace {

/// What a preparation and a solve leave behind.
struct Outcome {
    std::int32_t ready = 0;
    std::int32_t modelStatus = -1;
    std::int32_t solveStatus = -1;
    double firstLevel = -1.0;
    std::string setupLog;
};

/// x0 - x1 = 1, x1 - x2 = 1, … with the last variable fixed at 0; `isUsed`: minimise x0.
norv::Model chainOf(std::int32_t length, bool isUsed, const norv::Environment& environment) {
    norv::ModelBuilder builder;
    for (std::int32_t j = 0; j < length; ++j)
        builder.addVariable(vex::variable_type::continuous, -1e3, 1e3);
    builder.addVariable(vex::variable_type::continuous, 0.0, 0.0);
    for (std::int32_t i = 0; i < length; ++i) {
        builder.addRow(vex::equation_type::equality, 1.0);
        builder.addCoefficient(i, i, 1.0);
        builder.addCoefficient(i, i + 1, -1.0);
    }
    if (isUsed) builder.addCoefficient(norv::objectiveRow, 0, 1.0);
    return builder.finish(environment);
}

Outcome run(std::int32_t length, bool isUsed, const std::string& options) {
    norv::Environment environment;
    std::string log;
    environment.setLogSink([&log](std::string_view text) { log += text; });
    environment.setSystemDirectory(BIN_DIRECTORY);
    environment.setTimeLimit(5);
    norv::Model model = chainOf(length, isUsed, environment);
    const std::string optionFile = testing::TempDir() + "/defvars_whole_run_test.opt";
    std::ofstream(optionFile) << options;
    model.setOptionFile(optionFile);
    Outcome outcome;
    void* handle = nullptr;
    xcreate(&handle);
    outcome.ready = vexReadyAPI(handle, model.handle(), nullptr);
    const std::size_t echo = log.find(options);
    outcome.setupLog = echo == std::string::npos ? log : log.substr(echo + options.size());
    vexCallSolver(handle);
    xfree(&handle);
    outcome.modelStatus = model.modelStatus();
    outcome.solveStatus = model.solveStatus();
    outcome.firstLevel = model.levels()[0];
    return outcome;
}

std::string pairs(std::int32_t nbPairs) {
    std::string text;
    for (std::int32_t k = 1; k <= nbPairs; ++k)
        text += "defvar x" + std::to_string(k) + " e" + std::to_string(k) + "\n";
    return text;
}
std::string taken(std::int32_t nbPairs) {
    return "Options file informs about equations that define variables... " +
           std::to_string(nbPairs) + " many.\n";
}
std::string found(std::int32_t nbFound) {
    return "Searching for equations that define variables... found " + std::to_string(nbFound) +
           "\n";
}

TEST(Chains, AreBuiltToTheLimitOfNestingOnceMoreOrNotAtAll) {
    const std::string on = "aggrvars 1\n";
    const std::string tooDeep = "Recursion depth limit reached during model setup.\n";
    const std::string disabling = "Disabling aggregation of variables.\n";
    const std::string consider = "Consider not using option 'defvar'.\n";
    const struct {
        const char* what;
        std::int32_t length;
        bool isUsed;
        std::string options;
        std::string log;
        bool isBuilt;
    } cases[] = {
        {"found, as deep as may be", 150, false, on, found(150), true},
        {"found, below the objective", 149, true, on, found(149), true},
        {"found, too deep", 151, false, on, found(151) + tooDeep + disabling, true},
        {"found, too deep below the objective", 150, true, on, found(150) + tooDeep + disabling,
         true},
        {"pairs alone, as deep as may be", 150, false, pairs(150), taken(150), true},
        {"pairs alone, too deep", 151, false, pairs(151), taken(151) + tooDeep + consider, false},
        {"too deep by what is found beside the pairs", 151, false, on + pairs(150),
         taken(150) + found(1) + tooDeep + disabling + taken(150), true},
        {"too deep even without the search", 151, false, on + pairs(151),
         taken(151) + found(0) + tooDeep + disabling + taken(151) + consider, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const Outcome outcome = run(c.length, c.isUsed, c.options);
        EXPECT_EQ(outcome.ready, 0);
        EXPECT_EQ(outcome.setupLog, c.log);
        if (c.isBuilt) {
            EXPECT_TRUE(outcome.modelStatus == vex::model_status::optimal ||
                        outcome.modelStatus == vex::model_status::feasible)
                << outcome.modelStatus;
            EXPECT_NEAR(outcome.firstLevel, c.length, 1e-4);
        } else {
            EXPECT_EQ(outcome.modelStatus, vex::model_status::noSolutionReturned);
            EXPECT_EQ(outcome.solveStatus, vex::solve_status::capabilityProblem);
        }
    }
}

}  // namespace
