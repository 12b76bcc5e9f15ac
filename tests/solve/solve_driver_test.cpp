#include "solve/solve_driver.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <limits>
#include <sstream>

#include "host/operations.hpp"
#include "translate/link_fixture.hpp"
#include "translate/recording_localsolver.hpp"

namespace {

constexpr const char* instance = "int x in 0 9 ; int y in 0 9 ; max x + 2 y ; c1 : x + y <= 4";

/// A file name that no other test uses; the file is gone at the end.
class ScratchFile {
public:
    explicit ScratchFile(const std::string& name) : path(testing::TempDir() + name) {}
    ~ScratchFile() { std::remove(path.c_str()); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    [[nodiscard]] std::string text() const {
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    }
    const std::string path;
};

TEST(SolveDriver, SolvesFromEndToEnd) {
    LinkFixture fixture(instance, {"seed 3"});
    recording::reset();
    fixture.environment.setIterationLimit(3000);
    fixture.environment.setTimeLimit(10);
    fixture.setUp();
    EXPECT_EQ(vex::runSolveDriver(fixture.link), 0);
    EXPECT_EQ(fixture.model.levels()[0] + fixture.model.levels()[1], 4.0);
    EXPECT_EQ(fixture.model.headAndTail(5), 8.0);
    EXPECT_NE(fixture.log.find("Objective Value:  8.00000000e+00\n"), std::string::npos);

    fixture.log.clear();
    EXPECT_EQ(vex::runSolveDriver(fixture.link), 0) << "the model is no longer idle";
    EXPECT_EQ(fixture.log, "");
}

TEST(SolveDriver, DoesNothingWithoutAClosedModel) {
    LinkFixture fixture(instance);
    recording::reset();
    fixture.model.setModelStatus(14);
    EXPECT_EQ(vex::runSolveDriver(fixture.link), 0) << "no solver";
    fixture.link.solver = std::make_unique<localsolver::LocalSolver>();
    EXPECT_EQ(vex::runSolveDriver(fixture.link), 0) << "a model that is not closed";
    EXPECT_EQ(fixture.log, "");
    EXPECT_EQ(fixture.model.modelStatus(), 14);
}

/// Lines of the calls between the first look at the state and the end of the search.
std::vector<std::string> callsOfSearch(LinkFixture& fixture) {
    recording::reset();
    fixture.setUp();
    recording::startRecording();
    recording::answer("ls_solve", 0);
    vex::runSolveDriver(fixture.link);
    std::vector<std::string> calls = recording::lines();
    recording::reset();
    const auto solve = std::find(calls.begin(), calls.end(), "ls_solve()");
    calls.erase(solve, calls.end());
    calls.erase(calls.begin());
    return calls;
}

TEST(SolveDriver, HandsOverParametersAndLimitsInOrder) {
    LinkFixture fixture(instance, {"seed 7", "annealinglevel 2", "logfreq 500", "dualbound 12.5"});
    fixture.environment.setThreads(3);
    fixture.environment.setTimeLimit(59.9);
    fixture.environment.setIterationLimit(1999999999);
    const std::vector<std::string> expected = {
        "ls_set_nb_threads(3)",
        "ls_set_seed(7)",
        "ls_set_annealing_level(2)",
        "ls_set_iteration_between_ticks(500)",
        "ls_set_double_objective_threshold(0, 12.5)",
        "ls_add_phase() = 0",
        "ls_phase_set_time_limit(0, 59)",
        "ls_phase_set_iteration_limit(0, 1999999999)",
    };
    EXPECT_EQ(callsOfSearch(fixture), expected);
}

TEST(SolveDriver, SetsNoLimitsThatNobodyAskedFor) {
    struct Limit {
        double seconds;
        const char* call;
    };
    const Limit limits[] = {
        {0.5, "ls_phase_set_time_limit(0, 0)"},
        {2147483648.0, "ls_phase_set_time_limit(0, 2147483647)"},
        {std::numeric_limits<double>::infinity(), "ls_phase_set_time_limit(0, 2147483647)"},
    };
    for (const Limit& limit : limits) {
        LinkFixture fixture(instance);
        fixture.environment.setTimeLimit(limit.seconds);
        fixture.environment.setIterationLimit(2000000000);
        const std::vector<std::string> calls = callsOfSearch(fixture);
        ASSERT_EQ(calls.size(), 6U);
        EXPECT_EQ(calls.back(), limit.call);
    }
}

TEST(SolveDriver, WritesFilesOnRequest) {
    const ScratchFile dump("driver_dump.txt");
    const ScratchFile environment("driver_environment.txt");
    LinkFixture fixture(instance,
                        {"dumpmodel " + dump.path, "writelsp " + environment.path, "solvetrace t"});
    recording::reset();
    fixture.environment.setTimeLimit(1);
    fixture.environment.setIterationLimit(100);
    fixture.setUp();
    EXPECT_EQ(vex::runSolveDriver(fixture.link), 0);
    EXPECT_EQ(dump.text(), "obj0: sum(x, prod(y, 2))\nc1: leq(sum(x, y), 4)\n");
    EXPECT_NE(environment.text(), "");
    const auto dumping = fixture.log.find("Dumping model to file.\n");
    const auto ignoring = fixture.log.find("the option is ignored.\n");
    const auto writing = fixture.log.find("Writing LocalSolver environment to file.\n");
    EXPECT_TRUE(dumping < ignoring && ignoring < writing && writing != std::string::npos)
        << fixture.log;
}

TEST(SolveDriver, DoesNotSolveWhenTheDumpCannotBeWritten) {
    LinkFixture fixture(instance, {"dumpmodel /no/such/folder/dump.txt"});
    recording::reset();
    fixture.setUp();
    fixture.model.setModelStatus(13);
    recording::startRecording();
    EXPECT_EQ(vex::runSolveDriver(fixture.link), 1);
    EXPECT_EQ(fixture.log, "Could not create dumpmodel file.\n");
    EXPECT_EQ(fixture.model.modelStatus(), 13);
    EXPECT_EQ(recording::lines(), std::vector<std::string>{"ls_get_state() = 3"});
    recording::reset();
}

TEST(SolveDriver, DoesNotSolveWhenAFileNameCannotBeRead) {
    for (const std::string name : {"dumpmodel", "writelsp"}) {
        const ScratchFile file("driver_unread.txt");
        LinkFixture fixture(instance, {name + " " + file.path});
        recording::reset();
        fixture.setUp();
        const SlotOverride unreadable(
            vex::optGetStrStr, "CoptGetStrStr",
            +[](vex::OptionHandle, const char*, char*) -> char* { return nullptr; });
        EXPECT_EQ(vex::runSolveDriver(fixture.link), 1);
        EXPECT_EQ(fixture.log, "Error reading " + name + " option value.\n");
        EXPECT_EQ(file.text(), "");
    }
}

TEST(SolveDriver, TurnsEveryErrorOfTheOptimizerIntoStatuses) {
    const ScratchFile dump("driver_faults.txt");
    for (const int code : {LS_ERROR_CALLER, LS_ERROR_INTERNAL}) {
        std::int64_t failing = 1;
        for (bool hit = true; hit; ++failing) {
            LinkFixture fixture("cont x in 4 4 ; max x ; c1 : x <= 4", {"dumpmodel " + dump.path});
            fixture.environment.setIterationLimit(10);
            fixture.environment.setTimeLimit(1);
            recording::reset();
            recording::failCall(failing, code);
            bool ready = true;
            try {
                fixture.setUp();
            } catch (const localsolver::LSException& error) {
                EXPECT_EQ(error.getErrorCode(), code);
                ready = false;
            }
            fixture.model.setModelStatus(0);
            fixture.model.setSolveStatus(0);
            const std::int32_t result = vex::runSolveDriver(fixture.link);
            hit = recording::nbCalls() >= failing;
            const bool reported = fixture.log.find("planned failure\n") != std::string::npos;
            const bool caller = code == LS_ERROR_CALLER;
            if (!ready) {
                EXPECT_EQ(fixture.model.modelStatus(), 0) << "left to who prepared the model";
            } else if (reported) {
                EXPECT_EQ(fixture.model.modelStatus(), caller ? 14 : 13) << "call " << failing;
                EXPECT_EQ(fixture.model.solveStatus(), caller ? 6 : 10);
                EXPECT_EQ(result, caller ? 0 : 1);
            } else {
                EXPECT_GT(fixture.model.modelStatus(), 0) << "call " << failing;
            }
            // The same object works again.
            recording::reset();
            fixture.setUp();
            EXPECT_EQ(vex::runSolveDriver(fixture.link), 0);
            EXPECT_EQ(fixture.model.levels()[0], 4.0);
        }
        EXPECT_GT(failing, 40);
        EXPECT_EQ(recording::nbSolvers(), 0);
    }
}

}  // namespace
