#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>

#include "norvsolve/run_program.hpp"

/// The examples through the real link, found beside the program: what examples/README.md promises.
namespace norv::test {
namespace {

struct Example {
    const char* file;
    double objective;
    double tolerance;   ///< relative; search alone comes close to a continuous optimum
    int provedStatus;   ///< with a proof
    int claimedStatus;  ///< without one, in a build without exact back ends
    const char* setting = "seed=0";
    const char* logLine = "";
};

TEST(Examples, endAsTheirReadmeSays) {
    const Example examples[] = {
        {"blend.mps", 1114.1626016260163, 1e-3, 1, 7},
        {"facility.mps", 2385.0, 0.0, 1, 8},
        {"greenhouse.mps", 107.6308756140993, 1e-3, 1, 7, "aggrvars=1",
         "Searching for equations that define variables... found 24\n"},
        {"knapsack.mps", 112.0, 0.0, 1, 8},
        {"portfolio.mps", 14.262780519601453, 1e-3, 1, 7},
    };
    for (const Example& example : examples) {
        SCOPED_TRACE(example.file);
        const std::string path = std::string(EXAMPLES_FOLDER "/") + example.file;
        const ProgramRun run = runProgram({NORVSOLVE_PROGRAM, path, example.setting, "-t", "4", "--json", "-"});
        ASSERT_EQ(run.exitCode, 0) << run.errors;
        EXPECT_NE(run.errors.find(example.logLine), std::string::npos);
        const nlohmann::json result = nlohmann::json::parse(run.output);
        const int status = result["modelStatus"]["code"];
        EXPECT_TRUE(status == example.provedStatus || status == example.claimedStatus) << status;
        EXPECT_NEAR(result["objective"].get<double>(), example.objective,
                    example.tolerance * example.objective);
        EXPECT_EQ(result["check"]["passed"], true);
    }
}

TEST(Examples, theRosterIsProvedInfeasible) {
    const ProgramRun run = runProgram({NORVSOLVE_PROGRAM, EXAMPLES_FOLDER "/infeasible.mps"});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_NE(run.output.find("Model instance proven to be infeasible."), std::string::npos);
}

TEST(Examples, aSpecialOrderedSetIsRefusedByTheLink) {
    const std::string path = scratchFile("sos.mps");
    writeFile(path, "ROWS\n N c\nCOLUMNS\n x c 1\n y c 1\nSOS\n S1 s\n x 1\n y 2\nENDATA\n");
    const ProgramRun run = runProgram({NORVSOLVE_PROGRAM, path});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_NE(run.output.find("Special Ordered Sets not supported.\n"), std::string::npos);
    EXPECT_NE(run.output.find("Model status 14 (no solution returned), solve status 6 (capability "
                              "problem)."),
              std::string::npos);
}

}  // namespace
}  // namespace norv::test
