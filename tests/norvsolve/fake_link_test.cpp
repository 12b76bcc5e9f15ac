#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "norvsolve/run_program.hpp"

/// The program against a link that only writes calls down, so that every way to end can be had.
namespace norv::test {
namespace {

using testing::HasSubstr;

const char* const model =
    "NAME fake\nROWS\n N cost\n L c1\n G c2\nCOLUMNS\n x cost 2 c1 1\n M 'MARKER' 'INTORG'\n"
    " n cost 1 c1 1\n M 'MARKER' 'INTEND'\n s cost 1 c2 1\nRHS\n r c1 8 c2 -9\n r cost -3\nBOUNDS\n"
    " UP b x 6\n UP b n 9\n LO b s 2\n SC b s 5\nENDATA\n";

class Norvsolve : public testing::Test {
protected:
    void SetUp() override {
        std::ofstream(path_) << model;
        tell("FAKE_LINK_CALLS", calls_);
        tell("FAKE_LINK_FAILS", "nothing");
        tell("FAKE_LINK_STATUS", "8");
        tell("FAKE_LINK_SOLVE", "1");
        tell("FAKE_LINK_LEVEL", "3");
    }

    static void tell(const char* variable, const std::string& value) {
        setVariable(variable, value);
    }

    ProgramRun solve(std::vector<std::string> more = {}) {
        std::ofstream(calls_, std::ios::trunc).flush();
        more.insert(more.begin(), {NORVSOLVE_PROGRAM, path_, "--link", FAKE_LINK});
        return runProgram(more);
    }

    std::string path_ = scratchFile("model.mps");
    std::string calls_ = scratchFile("calls");
};

TEST_F(Norvsolve, callsTheLinkInTheHostsOrder) {
    const ProgramRun run = solve();
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(contentOf(calls_),
              "c__xapiversion 1\nc__xcheck vexReadyAPI 2 3 1 1\nc__xcheck vexCallSolver 0 3\n"
              "vexInitialize\nvexcreate\n"
              "vexReadyAPI no options, file 0 , preset 13, limits 60 2000000000 1\n"
              "vexCallSolver\nvexfree\nvexFinalize\n");
    EXPECT_THAT(run.output, HasSubstr("a line for log and status\n"));
    EXPECT_THAT(run.output, HasSubstr("Model status 8 (feasible, with discrete variables), solve "
                                      "status 1 (normal completion).\nObjective: 15\nCheck: "
                                      "passed, no row or bound violated.\n"));
}

TEST_F(Norvsolve, handsLimitsAndOptionsOn) {
    const std::string optionFile = scratchFile("options.opt");
    std::ofstream(optionFile) << "seed 3\n";
    const ProgramRun run = solve({"-t", "0.5", "-i", "7", "--threads", "3", "-o", optionFile});
    EXPECT_THAT(contentOf(calls_), HasSubstr("vexReadyAPI no options, file 1 " + optionFile +
                                             ", preset 13, limits 1 7 3\n"));
    EXPECT_THAT(run.output,
                HasSubstr("Time limit 0.5 s: the link takes whole seconds, 1 is used."));
    EXPECT_EQ(solve({"-o", optionFile, "seed=5"}).exitCode, 0);
    EXPECT_THAT(contentOf(calls_), HasSubstr("vexReadyAPI options, file 0 "));
}

TEST_F(Norvsolve, tellsTheWayItFailedByItsExitCode) {
    struct Case {
        const char* failing;
        const char* complaint;
        const char* lastCall;
    };
    const Case cases[] = {
        {"c__xapiversion", "the link refuses this host: a version of its own", "version 1\n"},
        {"c__xcheck", "the link does not fit this host: a signature of its own", "2 3 1 1\n"},
        {"vexcreate", "vexcreate failed: no room", "vexFinalize\n"},
        {"vexReadyAPI", "vexReadyAPI failed", "vexfree\nvexFinalize\n"},
        {"vexCallSolver", "vexCallSolver failed", "vexfree\nvexFinalize\n"},
    };
    for (const Case& each : cases) {
        tell("FAKE_LINK_FAILS", each.failing);
        const ProgramRun run = solve();
        EXPECT_EQ(run.exitCode, 4) << each.failing;
        EXPECT_THAT(run.errors, HasSubstr(each.complaint));
        EXPECT_THAT(contentOf(calls_), testing::EndsWith(each.lastCall));
    }
    tell("FAKE_LINK_FAILS", "nothing");
    EXPECT_EQ(solve({"sed=1"}).exitCode, 1);
    EXPECT_EQ(solve({"--strict", "-t", "1.5"}).exitCode, 1);
    EXPECT_EQ(solve({"-o", path_ + ".none"}).exitCode, 1);
    EXPECT_EQ(solve({"--solution", path_ + "/none"}).exitCode, 7);
    EXPECT_EQ(solve({"--solution", path_}).exitCode, 1);
    EXPECT_EQ(runProgram({NORVSOLVE_PROGRAM, path_, "--link", path_}).exitCode, 4);
    EXPECT_EQ(runProgram({NORVSOLVE_PROGRAM, "--version"}).exitCode, 0);
    std::ofstream(path_) << "ROWS\n Q c\n";
    const ProgramRun malformed = solve();
    EXPECT_EQ(malformed.exitCode, 1);
    EXPECT_EQ(malformed.errors,
              path_ + ":2:2: found \"Q\", expected the type of a row: N, E, L or G\n");
}

TEST_F(Norvsolve, checksThePointItself) {
    struct Case {
        const char* what;
        const char* status;
        const char* level;
        int exitCode;
        const char* check;
    };
    const Case cases[] = {
        {"0 is a level of a semi-continuous variable", "1", "0", 0, "Check: passed, no row"},
        {"within the tolerance", "8", "4.0000005", 0,
         "Check: passed, largest violation 5e-07 (variable n)"},
        {"below the gap of a semi-continuous variable", "8", "1", 6, "(variable s)"},
        {"not integral", "7", "3.5", 6, "(variable n)"},
        {"a row is violated", "16", "5", 6, "most by 0.2 (row c1)"},
        {"above a bound", "2", "7", 6, "Check: FAILED, 3 violated beyond 1e-06"},
        {"not a number", "8", "nan", 6, "most by inf"},
        {"no point claimed, none checked", "5", "7", 3, "Check: no feasible point reported."},
        {"a point known to be infeasible", "6", "7", 3, "Check: no feasible point reported."},
    };
    for (const Case& each : cases) {
        tell("FAKE_LINK_STATUS", each.status);
        tell("FAKE_LINK_LEVEL", each.level);
        const ProgramRun run = solve();
        EXPECT_EQ(run.exitCode, each.exitCode) << each.what;
        EXPECT_THAT(run.output, HasSubstr(each.check)) << each.what;
    }
    tell("FAKE_LINK_STATUS", "8");
    tell("FAKE_LINK_LEVEL", "3");
    const std::string start(model, std::strlen(model) - std::strlen("ENDATA\n"));
    std::ofstream(path_) << start
                         << "SOS\n S2 pair\n x 1\n n 2\n S2 run\n x 1\n n 2\n s 3\nENDATA\n";
    EXPECT_THAT(solve().output, HasSubstr("Check: FAILED, 1 violated beyond 1e-06, most by 3 "
                                          "(special ordered set run)."));
}

TEST_F(Norvsolve, saysWhatImposedBoundsMean) {
    struct Case {
        const char* what;
        const char* model;  ///< after the rows c (minimised), l and g: columns and more
        const char* status;
        const char* level;
        const char* meaning;
        const char* solveStatus = "1";
        const char* setting = "seed=0";
    };
    const char* const inside =
        "\nMeaning: optimal; no variable is at a bound of 1e10 that the link";
    const char* const box = "\nMeaning: optimal among points within ±1e10.\n";
    const char* const integer = " M 'MARKER' 'INTORG'\n n c 1\nBOUNDS\n PL b n\n";
    const Case cases[] = {
        {"linear", " x c 1\n", "7", "2", inside},
        {"with integers", integer, "8", "2", box},
        {"semidefinite", " x c 1\n y c 1\nQUADOBJ\n x x 2\n x y -2\n y y 2\n", "7", "2", inside},
        {"definite", " x c 1\n y c 1\nQUADOBJ\n x x .3\n x y -.2\n y y .7\n", "7", "2", inside},
        {"indefinite", " x c 1\n y c 1\nQUADOBJ\n x x 2\n x y 3\n y y 2\n", "7", "2", box},
        {"a product", " x c 1\n y l 1\nQCMATRIX l\n x y 1\n y x 1\n", "7", "0", box},
        {"concave below", " x g 1\nQCMATRIX g\n x x -1\n", "7", "0", "there is no objective.\n"},
        {"concave below", " x g 1 c 1\nQCMATRIX g\n x x -1\n", "7", "0", inside},
        {"convex below", " x g 1 c 1\nQCMATRIX g\n x x 1\n", "7", "2", box},
        {"at the border", " x c -1\n y c 1\n z c 1\n w c -4\n v l 0\n", "7", "1e10",
         "\nMeaning: unbounded, or best beyond 1e10; x, y, z and 1 more are at a bound"},
        {"by chance", " x c 1\n y c -1\n", "7", "1e10", "; x and y are at a bound of 1e10 that"},
        {"a direction that a row forbids", " x g -1\n y g 1\n w c 1 g 1\nRHS\n r g 1e10\n", "7",
         "1e10", "unbounded, or best beyond 1e10; x, y and w are at"},
        {"a free row's variable", " x c 1\n N1 n 1\nBOUNDS\n UP b x 9\n", "7", "2", ""},
        {"stopped there", " x c -1\n", "7", "1e10", "\nMeaning: x is at a bound of 1e10", "3"},
        {"stopped inside", " x c -1\n", "7", "2", "", "3"},
        {"a threshold", " x c -1\n", "7", "2", "", "1", "dualbound=3"},
        {"infeasible", " x c -1\n", "5", "2",
         "infeasible, at least while no variable exceeds 1e10."},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        std::ofstream(path_) << "ROWS\n N c\n L l\n G g\n N n\nCOLUMNS\n"
                             << each.model << "ENDATA\n";
        tell("FAKE_LINK_STATUS", each.status);
        tell("FAKE_LINK_SOLVE", each.solveStatus);
        tell("FAKE_LINK_LEVEL", each.level);
        const ProgramRun run = solve({each.setting});
        EXPECT_THAT(run.output, HasSubstr(each.meaning));
        EXPECT_EQ(run.output.find("Meaning") == std::string::npos, each.meaning[0] == '\0')
            << run.output;
    }
}

TEST_F(Norvsolve, writesItsResults) {
    const std::string solution = scratchFile("solution");
    const std::string status = scratchFile("status");
    const ProgramRun run =
        solve({"--json", "-", "--solution", solution, "--status-file", status, "--print-solution"});
    EXPECT_EQ(contentOf(solution), "x\t3\nn\t3\ns\t3\n");
    EXPECT_EQ(contentOf(status), "a line for log and status\n");
    EXPECT_THAT(run.errors, HasSubstr("a line for log and status\n"));
    EXPECT_THAT(run.errors, HasSubstr("x\t3\n"));
    const nlohmann::json result = nlohmann::json::parse(run.output);
    EXPECT_EQ(result["modelStatus"]["code"], 8);
    EXPECT_EQ(result["solveStatus"]["text"], "normal completion");
    EXPECT_EQ(result["objective"], 15.0);
    EXPECT_EQ(result["iterations"], 17.0);
    EXPECT_EQ(result["check"]["passed"], true);
    EXPECT_EQ(result["variables"][2], nlohmann::json({{"name", "s"}, {"level", 3.0}}));

    tell("FAKE_LINK_STATUS", "10");
    const nlohmann::json none = nlohmann::json::parse(solve({"--json", "-"}).output);
    EXPECT_TRUE(none["objective"].is_null() && none["check"].is_null());
    EXPECT_TRUE(none["variables"].empty());
}

TEST_F(Norvsolve, losesNoResultForAnother) {
    const std::string solution = scratchFile("kept");
    writeFile(solution, "of before");
    EXPECT_EQ(solve({"--solution", solution, "--json", scratchFile("none") + "/x"}).exitCode, 7);
    EXPECT_EQ(contentOf(calls_), "");  // known before the search
    EXPECT_EQ(contentOf(solution), "of before");
    EXPECT_EQ(solve({"--solution", solution, "--json", solution}).exitCode, 1);
    if (!std::filesystem::is_character_file("/dev/full"))
        GTEST_SKIP() << "no device that is always full";
    const ProgramRun run = solve({"--solution", solution, "--json", "/dev/full"});
    EXPECT_EQ(run.exitCode, 7);
    EXPECT_EQ(run.errors, "norvsolve: /dev/full: cannot be written: No space left on device\n");
    EXPECT_EQ(contentOf(solution), "x\t3\nn\t3\ns\t3\n");
}

TEST_F(Norvsolve, saysWhatBecameOfAStartingPoint) {
    const std::string start = scratchFile("start");
    const struct {
        const char* text;
        const char* words;
    } cases[] = {
        {"x\t1\nn 2\ns\t3\n", "Start: feasible, objective 10.\n"},
        {"x 6\nn 5\ns 9\ny 1\n",
         "Start: 1 of 2 rows violated, most by 0.272727: row c1; 1 value moved into its bounds; "
         "unknown names: y.\n"},
        {"m\n\nOptions\n3\n1\n1\n0\n2\n0\n3\n3\n1\n2\n0\nobjno 0 0\n",
         "Start: feasible, objective 7.\n"},
        {"x\t1\nn\ttwo\n", ":2:3: found \"two\", expected a finite number\n"},
        {"m\n\nOptions\n3\n1\n1\n0\n2\n0\n2\n2\n1\n2\n",
         ":11:1: found \"2\", expected a level for each variable of the model\n"},
    };
    for (const auto& each : cases) {
        writeFile(start, each.text);
        const ProgramRun run = solve({"--start", start});
        EXPECT_THAT(run.output + run.errors, HasSubstr(each.words));
    }
}

}  // namespace
}  // namespace norv::test
