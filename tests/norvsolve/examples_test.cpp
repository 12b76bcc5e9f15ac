#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "norv/file_path.hpp"
#include "norv/readers/nl_writer.hpp"
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
        const ProgramRun run =
            runProgram({NORVSOLVE_PROGRAM, path, example.setting, "-t", "4", "--json", "-"});
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
    EXPECT_EQ(run.exitCode, 2) << run.errors;
    EXPECT_NE(run.output.find("Model instance proven to be infeasible."), std::string::npos);
    EXPECT_NE(run.output.find("These cannot hold together: row "), std::string::npos) << run.output;
}

TEST(Examples, runsAreRepeatedFromTheirResults) {
    const std::string result = scratchFile("result.json");
    runProgram({NORVSOLVE_PROGRAM, EXAMPLES_FOLDER "/knapsack.mps", "seed=3", "-t", "2", "--json",
                result});
    const auto rerun = [&result] { return runProgram({NORVSOLVE_PROGRAM, "--rerun", result}); };
    EXPECT_NE(rerun().output.find("Settings: seed 3, time-limit 2"), std::string::npos);
    EXPECT_NE(rerun().output.find("\nRerun: the same answer.\n"), std::string::npos);
    std::string text = contentOf(result);
    text.replace(text.find("\"objective\": 112"), 16, "\"objective\": 113");
    writeFile(result, text);
    const ProgramRun other = rerun();
    EXPECT_EQ(other.exitCode, 6);
    EXPECT_NE(other.output.find("Rerun: another answer: objective 112, not 113."),
              std::string::npos);
}

TEST(Examples, filesAreFoundInFoldersOfAnyScript) {
    const std::string folder = scratchFile("Пример_日本_é");
    std::filesystem::create_directory(filePath(folder));
    const auto in = [&](const char* name) { return folder + "/" + name; };
    writeFile(in("модель.mps"), contentOf(EXAMPLES_FOLDER "/knapsack.mps"));
    writeFile(in("設定.opt"), "seed 3\nlogfreq 0\n");
    const ProgramRun run = runProgram({NORVSOLVE_PROGRAM, in("модель.mps"), "-o", in("設定.opt"),
                                       "-t", "2", "--solution", in("решение"), "--json",
                                       in("結果.json"), "--status-file", in("état")});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    // The link's own words about the option file: its name went through all libraries.
    EXPECT_NE(run.output.find(in("設定.opt") + ":2: "), std::string::npos) << run.output;
    EXPECT_EQ(nlohmann::json::parse(contentOf(in("結果.json")))["file"], in("модель.mps"));
    EXPECT_NE(contentOf(in("решение")), "");
    EXPECT_NE(contentOf(in("état")), "");
    setVariable("norvsolve_options", "optionfile=" + in("無.opt"));
    writeFile(in("模型.nl"), NlWriter(NlForm::text).write({{}, {}, {"v0"}, {}, 1, false}));
    EXPECT_EQ(runProgram({NORVSOLVE_PROGRAM, in("模型"), "-AMPL"}).exitCode, 0);
    setVariable("norvsolve_options", "");
    EXPECT_NE(contentOf(in("模型.sol")).find(in("無.opt") + ": cannot be opened"),
              std::string::npos);
}

TEST(Examples, SpecialOrderedSetsAreSolvedOrRefused) {
    const std::string start =
        "OBJSENSE MAX\nROWS\n N c\n L r\nCOLUMNS\n x c 1 r 1\n y c 2 r 1\n z c 3 r 1\nRHS\n r r "
        "15\nBOUNDS\n UP x 10\n UP y 10\n UP z 10\n";
    const std::string members = " x 2\n z 1\n y 3\nENDATA\n";
    const std::string one = start + "SOS\n S1 s\n" + members;
    const std::string two = start + "SOS\n S2 s\n" + members;
    const struct {
        std::string text;
        std::vector<std::string> settings;
        int exitCode;
        const char* words;  ///< of the output or the complaint
    } cases[] = {
        {one, {}, 0, "Objective Value:  3.0000"},
        {one, {}, 0, ": 1 special ordered set is solved as 3 binary variables and 4 rows\n"},
        {two, {}, 0, "Objective Value:  3.5000"},
        {two, {"--json", "-"}, 0, "\"columns\": 3,"},
        {start + " PL z\nSOS\n S1 s\n" + members, {}, 0, "Objective Value:  4.5000"},
        {start + " MI z\nSOS\n S1 s\n" + members,
         {},
         5,
         ": special ordered set \"s\": found no lower bound of member \"z\", expected one of its "
         "own or one that a linear row implies\n"},
        {one, {"--square"}, 1, "no square system: found special ordered sets\n"},
        {one, {"--sos=refuse"}, 5, ": special ordered sets are kept: \"s\" (type 1)\n"},
        {two,
         {"--sos=refuse"},
         5,
         "Special Ordered Sets not supported.\nModel status 14 (no solution returned), solve "
         "status 6 "},
        {two, {"--sos=no"}, 1, "sos: found \"no\", expected reformulate or refuse"},
    };
    const std::string path = scratchFile("sos.mps");
    for (const auto& each : cases) {
        writeFile(path, each.text);
        // Without an exact back end nothing is proved, and the last digits are the tolerance's.
        std::vector<std::string> words = {NORVSOLVE_PROGRAM, path, "-t", "2"};
        words.insert(words.end(), each.settings.begin(), each.settings.end());
        const ProgramRun run = runProgram(words);
        EXPECT_EQ(run.exitCode, each.exitCode) << run.errors;
        EXPECT_NE((run.output + run.errors).find(each.words), std::string::npos)
            << run.output << run.errors;
    }
}

}  // namespace
}  // namespace norv::test
