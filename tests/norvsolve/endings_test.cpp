#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <sstream>
#include <thread>

#include "norvsolve/run_program.hpp"

/// How searches end, through the real link: the texts in the log, the statuses and the trace.
namespace norv::test {
namespace {

using testing::HasSubstr;

/// Without discrete variables and without a proof within reach, since any half of the variables may
/// be 1 and the others -1: any end is the limit's or the user's.
std::string endless() {
    constexpr int nb = 24;
    const auto x = [](int j) { return " x" + std::to_string(j); };
    std::string columns = "ROWS\n N cost\n G c1\nCOLUMNS\n";
    std::string bounds = "RHS\n r c1 -99\nBOUNDS\n";
    std::string products = "QUADOBJ\n";
    for (int j = 0; j < nb; ++j) {
        columns += x(j) + " c1 1\n";
        bounds += " LO b" + x(j) + " -1\n UP b" + x(j) + " 1\n";
        for (int i = 0; i < j; ++i) products += x(i) + x(j) + " 1\n";
    }
    return columns + bounds + products + "ENDATA\n";
}
const char* const easy =
    "ROWS\n N cost\n L c1\nCOLUMNS\n x cost -2 c1 1\nRHS\n r c1 8\nBOUNDS\n UP b x 6\nENDATA\n";
const char* const equations =
    "ROWS\n N cost\n E c1\n E c2\nCOLUMNS\n x c1 1 c2 1\n y c1 1 c2 -1\nRHS\n r c1 5 c2 1\n"
    "BOUNDS\n UP b x 9\n UP b y 9\nENDATA\n";

struct Ending {
    std::string model;
    std::vector<std::string> arguments;
    int signal;          ///< sent when the search has begun; 0: none
    std::string log;     ///< from the blank line on with which the search ends
    const char* status;  ///< in the summary
    const char* best;    ///< as the trace's last record has it
};

/// What the log says of a search on endless() that something stopped.
std::string stopped(const std::string& reason) {
    return "Stopped due to " + reason + ".\nFeasible solution found.\nObjective Value: -";
}

const char* const improved = "-[0-9.]+";

const Ending endings[] = {
    {easy,
     {},
     0,
     "Optimal solution found.\nObjective Value: -1.20000000e+01\n"
     "Model status 1 (optimal), solve status 1 (normal completion).\nObjective: -12\nCheck: passed",
     "solve status 1 ",
     "-12"},
    {endless(), {"-i", "2000"}, 0, stopped("iteration limit"), "solve status 2 (iter", improved},
    {endless(), {"-t", "1.9"}, 0, stopped("time limit"), "solve status 3 (time limit)", improved},
    {endless(), {}, SIGINT, stopped("user interrupt (Ctrl+C event)"), "status 8 (user", improved},
    {endless(), {}, SIGTERM, stopped("user interrupt (Ctrl+C event)"), "status 8 (user", improved},
    {equations,
     {"--square"},
     0,
     "Optimal solution found.\nModel status 16 (solved), solve status 1 (normal "
     "completion).\nCheck",
     "Check: passed",
     "0"},
};

/// The trace of a search that ended with the given best value: S first, E last, T in between.
std::string tracePattern(const std::string& path, const std::string& best) {
    const std::string number = "[0-9.e+-]+";
    const std::string time = ", 0, " + number + ", ";
    return "[*] solvetrace file " + path + ": ID = LocalSolver Instance = \n" +
           "[*] fields are lineNum, seriesID, node, seconds, bestFound, bestBound\n" +  //
           "1, S" + time + "(na|" + number + "), na\n" +                                //
           "([0-9]+, T" + time + number + ", na\n)*" +                                  //
           "[0-9]+, E" + time + best + ", na\n" +                                       //
           "[*] solvetrace file closed\n";
}

TEST(Endings, giveTheirTextsStatusesAndTraces) {
    const std::string model = scratchFile("ending.mps");
    const std::string trace = scratchFile("trace.txt");
    for (const Ending& ending : endings) {
        SCOPED_TRACE(ending.log);
        writeFile(model, ending.model);
        std::vector<std::string> arguments = {NORVSOLVE_PROGRAM, model, "solvetrace=" + trace,
                                              "logfreq=500"};
        arguments.insert(arguments.end(), ending.arguments.begin(), ending.arguments.end());
        const RunningProgram program(arguments);
        if (ending.signal != 0) {
            // The first local solve or descent ends next to the best point.
            program.waitForOutput("objective -");
            program.send(ending.signal);
        }
        const ProgramRun run = program.wait();
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        EXPECT_THAT(run.output, HasSubstr("\n\n" + ending.log));
        EXPECT_THAT(run.output, HasSubstr(ending.status));
        EXPECT_THAT(run.output, HasSubstr("\nCheck: passed"));
        EXPECT_THAT(contentOf(trace), testing::MatchesRegex(tracePattern(trace, ending.best)));
    }
}

TEST(Endings, aSecondSignalEndsTheProcess) {
    setVariable("FAKE_LINK_HANGS", "yes");
    const std::string model = scratchFile("ending.mps");
    const std::string solution = scratchFile("point.txt");
    writeFile(model, easy);
    struct Case {
        int first, second;
        const char* level;    ///< of the best point, which was looked at by then
        const char* content;  ///< left in the file of the solution
    };
    for (const auto& [first, second, level, content] :
         {Case{SIGINT, SIGINT, "4", "x\t4\n"}, Case{SIGINT, SIGTERM, "7", "before"}}) {
        setVariable("FAKE_LINK_LEVEL", level);
        writeFile(solution, "before");
        const RunningProgram program(
            {NORVSOLVE_PROGRAM, model, "--link", FAKE_LINK, "--solution", solution});
        program.waitForOutput("hanging\n");
        program.send(first);
        program.waitForOutput("asked to stop\n");
        program.send(second);
        EXPECT_EQ(program.wait().exitCode, 128 + second);
        EXPECT_EQ(contentOf(solution), content);
    }
}

/// A row that defines a variable: z is the sum of the others, and the optimizer does not know it.
std::string withSum(std::string model) {
    const auto insert = [&model](const std::string& before, const std::string& text) {
        model.insert(model.find(before), text);
    };
    insert("COLUMNS", " E total\n");
    for (int j = 0; j < 24; ++j) {
        const std::string x = "x" + std::to_string(j);
        insert(" " + x + " c1", " " + x + " total 1\n");
    }
    insert("RHS", " z total -1\n");
    insert("QUADOBJ", " FR b z\n");
    return model;
}

TEST(Endings, aKilledProcessLeavesItsBestPoint) {
    const std::string model = scratchFile("ending.mps");
    const std::string solution = scratchFile("point.txt");
    const std::string result = scratchFile("point.json");
    writeFile(model, withSum(endless()));
    writeFile(solution, "");
    writeFile(result, "");
    const RunningProgram program({NORVSOLVE_PROGRAM, model, "--solution", solution, "--json",
                                  result, "aggrvars=1", "logfreq=500"});
    program.waitForOutput("objective -");
    for (int k = 0; k < 3000 && contentOf(solution).empty(); ++k)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    program.send(SIGKILL);
    EXPECT_EQ(program.wait().exitCode, -SIGKILL);
    EXPECT_THAT(contentOf(result), HasSubstr("\"exitCode\": null"));
    EXPECT_THAT(contentOf(result), HasSubstr("\"passed\": true"));
    std::istringstream lines(contentOf(solution));
    std::string name;
    double level = 0.0;
    double sum = 0.0;
    int nbNamed = 0;
    for (; lines >> name >> level; ++nbNamed) sum += name == "z" ? -level : level;
    EXPECT_GT(nbNamed, 20);
    EXPECT_NEAR(sum, 0.0, 1e-9);
}

TEST(Endings, squareSystemsAreSquare) {
    const std::string model = scratchFile("ending.mps");
    writeFile(model, easy);
    const ProgramRun run = runProgram({NORVSOLVE_PROGRAM, model, "--square"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, HasSubstr("found 0 equations, 1 inequalities and an objective"));
}

}  // namespace
}  // namespace norv::test
