#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "norv/readers/nl_writer.hpp"
#include "norvsolve/run_program.hpp"

/// The program as a client of the AMPL solver protocol meets it. The link is one that reports what
/// it is told; only the last test asks the real one.
namespace norv::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

class AmplProtocol : public testing::Test {
protected:
    void SetUp() override {
        writeModel(NlForm::text, {});
        for (const char* unset : {"norvsolve_options", "FAKE_LINK_SOLVE", "FAKE_LINK_HANGS"})
            setVariable(unset, "");
        setVariable("FAKE_LINK_CALLS", scratchFile("calls"));
        setVariable("FAKE_LINK_FAILS", "nothing");
        report(1, 1, "2.5");
    }

    void writeModel(NlForm form, const std::string& options) {
        std::string text = NlWriter(form).write(sketch);
        // The flag in front of the counts of discrete variables: the client reads codes.
        text[text.find("\n0 0 0 0 0\n") - 1] = '1';
        if (!options.empty()) text.replace(1, text.find('\n') - 1, options);
        writeFile(stub + ".nl", text);
        writeFile(stub + ".sol", "of an earlier run");
    }
    static void report(int modelStatus, int solveStatus, const std::string& level) {
        setVariable("FAKE_LINK_STATUS", std::to_string(modelStatus));
        setVariable("FAKE_LINK_SOLVE", std::to_string(solveStatus));
        setVariable("FAKE_LINK_LEVEL", level);
    }

    ProgramRun call(std::vector<std::string> words) {
        words.insert(words.begin(), NORVSOLVE_PROGRAM);
        writeFile(scratchFile("calls"), "");
        return runProgram(words);
    }
    ProgramRun solve(std::vector<std::string> keywords = {}) {
        keywords.insert(keywords.begin(), {stub, "-AMPL", "link=" FAKE_LINK});
        return call(keywords);
    }
    [[nodiscard]] std::string solution() const { return contentOf(stub + ".sol"); }

    /// x1 has an objective -x1 and x1 >= 0; x2 and x3 are free.
    NlSketch sketch = {{"v0"}, {}, {"o16 v0"}, {}, 3, false};
    std::string stub = scratchFile("ampl");
};

TEST_F(AmplProtocol, tellsTheOutcomeByItsCode) {
    struct Case {
        int modelStatus, solveStatus;
        const char* level;
        int code;
        const char* message;
        bool hasLevels;
    };
    const Case cases[] = {
        {16, 1, "2.5", 0, "solved; objective -2.5\n17 iterations, 0 seconds", true},
        {7, 1, "2.5", 0, "optimal; no variable is at a bound of 1e10", true},
        {10, 1, "0", 200, "infeasible\n", false},
        {5, 1, "0", 200, "infeasible, at least while no variable exceeds 1e10\n", false},
        {7, 3, "1e10", 402, "time limit, feasible solution; x1 is at a bound", true},
        {6, 8, "0", 471, "interrupted, the point found violates a row of the model\n", false},
        {6, 1, "0", 470, "the point found violates a row of the model\n", false},
        {13, 10, "0", 504, "the solve failed\n", false},
        {7, 1, "-2", 520, "the point found fails the check of row e1;", true},
        {14, 6, "0", 510, "the model uses something that is not supported\n", false},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.message);
        report(each.modelStatus, each.solveStatus, each.level);
        const ProgramRun run = solve();
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        EXPECT_THAT(solution(), HasSubstr(std::string(": ") + each.message));
        EXPECT_THAT(solution(), HasSubstr(each.hasLevels ? "\n1\n0\n3\n3\n" : "\n1\n0\n3\n0\nobj"));
        EXPECT_THAT(solution(), HasSubstr("\nobjno 0 " + std::to_string(each.code) + '\n'));
        // Silence, but for what explains a failure.
        const bool explains = each.code == 504 || each.code == 510;
        EXPECT_EQ(run.output.find("a line for log") != std::string::npos, explains) << run.output;
    }
}

TEST_F(AmplProtocol, namesARelationThatHoldsWithinItsToleranceOnly) {
    struct Case {
        const char* row;
        const char* objective;
        const char* level;
        const char* check;
    };
    const Case cases[] = {
        {"o28 v0 n3", "n0", "2.9999999",
         "Check: passed, within tolerance only: row e1: relation 2.9999999 >= 3.\n"},
        {"o29 v0 n3", "n0", "3", "FAILED, 1 violated beyond 1e-06, most by 1 (row e1).\n"},
        {"o28 v0 n3", "n0", "2.9999", "FAILED, 1 violated beyond 1e-06, most by 1 (row e1).\n"},
        {"o30 v0 n3", "n0", "3.0000001", "Check: passed, no row or bound violated.\n"},
        {"o28 v0 n1", "o35 o22 v0 n3 n7 v0", "2.9999999",
         "only: the objective: relation 2.9999999 < 3.\n"},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.row);
        sketch = {{}, {each.row}, {each.objective}, {}, 1, false};
        writeModel(NlForm::text, {});
        report(1, 1, each.level);
        const ProgramRun run = solve({"outlev=1"});
        EXPECT_THAT(run.output, HasSubstr(each.check));
        const bool hasFailed = run.output.find("FAILED") != std::string::npos;
        EXPECT_THAT(solution(), HasSubstr(hasFailed ? "objno 0 520\n" : "objno 0 0\n"));
    }
}

TEST_F(AmplProtocol, writesTheFileThatTheSolverLibraryWrites) {
    struct Case {
        NlForm form;
        const char* options;
    };
    const Case cases[] = {
        {NlForm::text, "3 0 1 0\t# problem t"},
        {NlForm::text, "3 1 3 0 1e-08"},
        {NlForm::text, "0"},
        {NlForm::text, "9 0 1 0 3 20130207 0 4 0 240"},
        {NlForm::littleEndian, "3 0 1 0"},
        {NlForm::littleEndian, "4 0 3 0 5 1e-08"},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.options);
        for (const bool hasLevels : {true, false}) {
            writeModel(each.form, each.options);
            report(hasLevels ? 1 : 4, 1, "2.5");
            EXPECT_EQ(solve().exitCode, 0);
            const std::string ours = solution();
            if (each.form == NlForm::text && each.options[0] != '0' && hasLevels) {
                EXPECT_THAT(runProgram({AMPL_SOLUTION, stub}).output,
                            EndsWith(" seconds\n2.5\n2.5\n2.5\n"));
            }
            const std::size_t start = ours.find("norvsolve ");
            const std::string message = ours.substr(start, ours.find("seconds") + 7 - start);
            writeFile(scratchFile("levels"), hasLevels ? "2.5 2.5 2.5" : "");
            runProgram({"/bin/sh", "-c", R"("$0" "$1" "$2" "$3" < "$4")", AMPL_SOLUTION, stub,
                        hasLevels ? "0" : "200", message, scratchFile("levels")});
            EXPECT_EQ(ours, solution());
        }
    }
    // The library knows no other byte order than its own.
    writeModel(NlForm::bigEndian, {});
    report(1, 1, "2.5");
    solve();
    using std::string_literals::operator""s;
    EXPECT_THAT(solution(), HasSubstr("\0\0\0\x18\x40\x04\0\0\0\0\0\0"s));
    EXPECT_THAT(solution(), HasSubstr("\0\0\0\x18\0\0\0\x08\0\0\0\0\0\0\0\0\0\0\0\x08"s));
}

TEST_F(AmplProtocol, takesKeywordsFromEnvironmentAndCommandLine) {
    setVariable("norvsolve_options", "TIMELIM = 5\tthreads 2 iterlim=7 seed=\"8\"");
    EXPECT_EQ(solve({"timelim=9.5", "outlev=", "1"}).exitCode, 0);
    EXPECT_THAT(contentOf(scratchFile("calls")), HasSubstr("vexReadyAPI options, file 0 , preset "
                                                           "13, limits 10 7 2\n"));
    setVariable("norvsolve_options", "");
    const std::string optionFile = scratchFile("my options.opt");
    writeFile(optionFile, "seed 3\nlogfreq soon\n");
    const ProgramRun loud = solve({"optionfile=" + optionFile, "outlev", "1", "wantsol=2"});
    EXPECT_THAT(contentOf(scratchFile("calls")), HasSubstr("no options, file 1 " + optionFile));
    EXPECT_THAT(loud.output, HasSubstr("a line for log and status\n"));
    EXPECT_THAT(loud.output, HasSubstr("outlev 1, wantsol 2, seed 3\n"));
    EXPECT_THAT(loud.output, EndsWith("x1\t2.5\nx2\t2.5\nx3\t2.5\n"));
}

TEST_F(AmplProtocol, reportsWhatIsWrongWhereTheClientLooks) {
    const struct {
        std::vector<std::string> words;
        int code;
        const char* complaint;
    } cases[] = {
        {{"seed=x"}, 501, "command line: option seed takes an integer, not \"x\""},
        {{"optionfile=/none"}, 501, "/none: cannot be opened: No such file or directory"},
        {{"link=/none"}, 504, "cannot load the link: /none"},
    };
    for (const auto& each : cases) {
        const ProgramRun run = solve(each.words);
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_THAT(run.errors, HasSubstr(each.complaint));
        EXPECT_THAT(solution(), HasSubstr(each.complaint));
        EXPECT_THAT(solution(), EndsWith("objno 0 " + std::to_string(each.code) + '\n'));
    }
    setVariable("FAKE_LINK_FAILS", "vexReadyAPI");
    EXPECT_THAT(solve().output, HasSubstr("a line for log and status\n"));
    EXPECT_THAT(solution(), EndsWith("objno 0 504\n"));
    writeFile(stub + ".nl", contentOf(stub + ".nl").substr(0, 90));
    EXPECT_EQ(solve().exitCode, 0);
    EXPECT_THAT(solution(), EndsWith("objno 0 501\n"));
    writeFile(stub + ".sol", "of an earlier run");
    writeFile(stub + ".nl", "g3 1 1 0\n");
    EXPECT_EQ(solve().exitCode, 1);
    EXPECT_EQ(solution(), "");  // nothing that a client could take for this run's
}

TEST_F(AmplProtocol, writesTheFileWithoutAClientToo) {
    const ProgramRun aside = call({"-s", stub + ".nl", "link=" FAKE_LINK});
    EXPECT_THAT(aside.output, HasSubstr("optimal solution; objective -2.5\n17 iterations"));
    EXPECT_THAT(solution(), HasSubstr("objno 0 0\n"));
    EXPECT_EQ(call({"-s", stub, "wantsol=8", "link=" FAKE_LINK, "outlev=0"}).output, "");
    EXPECT_EQ(call({"-o" + stub + "_2", stub, "wantsol=4", "link=" FAKE_LINK}).exitCode, 0);
    EXPECT_THAT(contentOf(stub + "_2.sol"), HasSubstr("\nno dual values: the search has none\n"));
}

}  // namespace
}  // namespace norv::test
