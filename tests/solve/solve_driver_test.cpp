#include "solve/solve_driver.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <limits>
#include <sstream>

#include "host/operations.hpp"
#include "solve/progress_callback.hpp"
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

/// What comes before the parameters: the starting point, then the events in this order.
const std::vector<std::string> opening = {
    "ls_expr_is_decision(1) = 1",
    "ls_expr_set_int_value(1, 0)",
    "ls_expr_is_decision(4) = 1",
    "ls_expr_set_int_value(4, 0)",
    "ls_add_callback(0, callback, address)",
    "ls_add_callback(3, callback, address)",
    "ls_add_callback(4, callback, address)",
    "ls_add_callback(1, callback, address)",
};

/// Lines of the calls between the opening and the end of the search.
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
    const auto end = calls.begin() + static_cast<std::ptrdiff_t>(opening.size());
    EXPECT_EQ(std::vector<std::string>(calls.begin(), end), opening);
    calls.erase(calls.begin(), end);
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
    const ScratchFile trace("driver_trace.txt");
    LinkFixture fixture(instance, {"dumpmodel " + dump.path, "writelsp " + environment.path,
                                   "solvetrace " + trace.path, "solvetracetime 0"});
    recording::reset();
    fixture.environment.setTimeLimit(1);
    fixture.environment.setIterationLimit(100);
    fixture.setUp();
    EXPECT_EQ(vex::runSolveDriver(fixture.link), 0);
    EXPECT_EQ(dump.text(), "obj0: sum(x, prod(y, 2))\nc1: leq(sum(x, y), 4)\n");
    EXPECT_NE(environment.text(), "");
    const auto dumping = fixture.log.find("Dumping model to file.\n");
    const auto writing = fixture.log.find("Writing LocalSolver environment to file.\n");
    EXPECT_TRUE(dumping < writing && writing != std::string::npos) << fixture.log;
    EXPECT_EQ(trace.text().find("* solvetrace file " + trace.path + ": ID = LocalSolver"), 0U);
    EXPECT_NE(trace.text().find("\n1, S, 0, "), std::string::npos);
    EXPECT_NE(trace.text().find("\n2, E, 0, "), std::string::npos);
    EXPECT_NE(trace.text().find(", 8, na\n* solvetrace file closed\n"), std::string::npos);
    EXPECT_EQ(fixture.link.trace, nullptr);
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
    std::vector<std::string> expected = {"ls_get_state() = 3"};
    expected.insert(expected.end(), opening.begin(), opening.end());
    EXPECT_EQ(recording::lines(), expected);
    recording::reset();
}

TEST(SolveDriver, GivesUpWithoutTheTraceThatWasAskedFor) {
    LinkFixture fixture(instance, {"solvetrace /no/such/folder/trace.txt"});
    recording::reset();
    fixture.setUp();
    EXPECT_EQ(vex::runSolveDriver(fixture.link), 3);
    EXPECT_EQ(fixture.log, "ERROR: Could not create solvetrace file.\n");
    EXPECT_EQ(fixture.link.trace, nullptr);
}

TEST(SolveDriver, StopsWhenTheHostAsks) {
    const ScratchFile trace("driver_stop.txt");
    LinkFixture fixture("cont x in 0 1 ; cont y in 0 1 ; max x * y - x * x * y ; c1 : x + y <= 9",
                        {"solvetrace " + trace.path, "logfreq 1"});
    recording::reset();
    fixture.setUp();
    fixture.environment.requestTermination();
    EXPECT_EQ(vex::runSolveDriver(fixture.link), 0);
    EXPECT_EQ(fixture.model.solveStatus(), 8);
    EXPECT_NE(fixture.log.find("\nStopped due to user interrupt (Ctrl+C event).\n"),
              std::string::npos)
        << fixture.log;
}

TEST(SolveDriver, LogsDescriptionAndProgress) {
    LinkFixture fixture("cont x in 0 1 ; cont y in 0 1 ; max x * y - x * x ; c1 : x + y <= 9",
                        {"logfreq 100"});
    recording::reset();
    fixture.environment.setIterationLimit(1000);
    fixture.environment.setTimeLimit(60);
    fixture.setUp();
    EXPECT_EQ(vex::runSolveDriver(fixture.link), 0);
    EXPECT_EQ(fixture.log.find("\nmodel: "), 0U) << fixture.log;
    EXPECT_NE(fixture.log.find(" iterations, feasible, objectives "), std::string::npos);
    EXPECT_NE(fixture.log.find(" || "), std::string::npos);
    EXPECT_NE(fixture.log.find("\nStopped due to iteration limit.\n"), std::string::npos);
}

TEST(SolveDriver, LetsNothingThroughTheCallback) {
    LinkFixture fixture(instance);
    recording::reset();
    fixture.setUp();
    fixture.environment.setTimeLimit(60);
    const SlotOverride broken(
        vex::nevTerminateGet, "nevTerminateGet",
        +[](vex::EnvironmentHandle) -> std::int32_t { throw 7; });
    EXPECT_EQ(vex::runSolveDriver(fixture.link), 1);
    EXPECT_EQ(fixture.log, "Unknown error\n");
    EXPECT_EQ(fixture.model.modelStatus(), 13);
    EXPECT_EQ(fixture.model.solveStatus(), 10);

    struct Thrower : localsolver::LSCallback {
        void callback(localsolver::LocalSolver&, localsolver::LSCallbackType) override { throw 7; }
    } thrower;
    fixture.setUp();  // a search that does not run refuses to be interrupted
    EXPECT_NO_THROW(vex::callbackDispatch(fixture.link.solver->getHandle(), LS_CALLBACK_TIME_TICKED,
                                          static_cast<localsolver::LSCallback*>(&thrower)));
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
            recording::startRecording();
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
            // Inside a callback the error ends the search, which then reports that as its own.
            const std::vector<std::string>& calls = recording::lines();
            const bool interrupted = std::any_of(calls.begin(), calls.end(), [](const auto& call) {
                return call.rfind("ls_interrupt", 0) == 0;
            });
            const bool caller = code == LS_ERROR_CALLER && !interrupted;
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
