#include <gmock/gmock.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "host/folder_loading.hpp"
#include "host/host_interfaces.hpp"
#include "link/entry_points.hpp"
#include "link/proxy.hpp"
#include "norv/environment.hpp"
#include "norv/model.hpp"
#include "norv/model_builder.hpp"

// From the host's model to its levels and statuses: link, built-in engine and built-in host, with
// the proxy host in between, which spoils one call at a time.

namespace vex::test {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr std::int32_t untouched = -1;  // a status that nobody set

struct Outcome {
    std::int32_t ready = 0;
    std::int32_t solve = 0;
    std::int32_t modelStatus = 0;
    std::int32_t solveStatus = 0;
    std::vector<double> levels;
    std::string log;

    bool operator==(const Outcome&) const = default;
};

/// max 3x + 2y - b / 2, x + y + b <= 4, x - y >= -2; best: x = 3, y = 1, b = 0, objective 11.
norv::Model smallModel(const norv::Environment& environment) {
    norv::ModelBuilder builder;
    const std::int32_t x = builder.addVariable(variable_type::integer, 0, 3, 0, "x");
    const std::int32_t y = builder.addVariable(variable_type::integer, 0, 5, 0, "y");
    const std::int32_t b = builder.addVariable(variable_type::binary, 0, 1, 0, "b");
    const std::int32_t limit = builder.addRow(equation_type::less, 4, "limit");
    const std::int32_t lead = builder.addRow(equation_type::greater, -2, "lead");
    for (const std::int32_t j : {x, y, b}) builder.addCoefficient(limit, j, 1);
    builder.addCoefficient(lead, x, 1);
    builder.addCoefficient(lead, y, -1);
    builder.addCoefficient(norv::objectiveRow, x, 3);
    builder.addCoefficient(norv::objectiveRow, y, 2);
    builder.addCoefficient(norv::objectiveRow, b, -0.5);
    builder.setSense(objective_sense::maximise);
    return builder.finish(environment);
}

class WholeRunTest : public testing::Test {
protected:
    WholeRunTest() {
        const LibraryLoading loading = loadingFrom(PROXY_HOST);
        char message[256];
        for (Binding* binding : {&nmoBinding, &nevBinding, &huxBinding, &optBinding}) {
            if (!binding->ensureLoaded({message, sizeof message}, loading)) {
                throw std::runtime_error(message);
            }
        }
        environment.setSystemDirectory(BIN_DIRECTORY);
        environment.setIterationLimit(20);
        environment.setTimeLimit(20);
        environment.setLogSink([this](std::string_view text) { log += text; });
        hub.reset();
        options.reset();
        optionFile = testing::TempDir() + "/link_whole_run_test.opt";
        std::ofstream(optionFile) << "seed 3\nlogfreq 1000\n";
    }

    Outcome run() {
        norv::Model model = smallModel(environment);
        model.setModelStatus(untouched);
        model.setSolveStatus(untouched);
        model.setOptionFile(optionFile);
        log.clear();
        Outcome outcome;
        void* handle = nullptr;
        xcreate(&handle);
        outcome.ready = vexReadyAPI(handle, model.handle(), nullptr);
        outcome.solve = vexCallSolver(handle);
        xfree(&handle);
        outcome.modelStatus = model.modelStatus();
        outcome.solveStatus = model.solveStatus();
        outcome.levels.assign(model.levels().begin(), model.levels().end());
        outcome.log = log;
        return outcome;
    }

    std::string log;
    norv::Environment environment;
    std::string optionFile;
    Proxy hub{PROXY_HOST, "hubdclib"};
    Proxy options{PROXY_HOST, "prmdclib"};
};

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

TEST_F(WholeRunTest, SmallInstanceIsSolvedAndLoggedLineByLine) {
    const Outcome outcome = run();
    EXPECT_EQ(outcome.ready, 0);
    EXPECT_EQ(outcome.solve, 0);
    EXPECT_THAT(outcome.levels, ElementsAre(3, 1, 0));
    // The engine may prove the optimum or be stopped first.
    const bool proved = outcome.modelStatus == model_status::optimal;
    EXPECT_THAT(outcome.modelStatus, AnyOf(model_status::optimal, model_status::integerSolution));
    EXPECT_EQ(outcome.solveStatus, proved ? solve_status::normal : solve_status::iterationLimit);
    const std::vector<std::string> lines = linesOf(outcome.log);
    ASSERT_GE(lines.size(), 10U);
    EXPECT_THAT(lines[1], StartsWith("LocalSolver link "));
    EXPECT_THAT(lines[3], StartsWith("LocalSolver interface, "));
    EXPECT_THAT(lines[7], StartsWith("model: "));
    EXPECT_THAT(lines[8], StartsWith("parameters: "));
    EXPECT_THAT(lines[9], StartsWith("phase 0: "));
    const std::string description = lines[7] + "\n" + lines[8] + "\n" + lines[9] + "\n";
    const std::string ending = proved
                                   ? "Optimal solution found.\n"
                                   : "Stopped due to iteration limit.\nFeasible solution found.\n";
    EXPECT_EQ(outcome.log, "\n" + lines[1] + "\n\n" + lines[3] + "\nseed 3\nlogfreq 1000\n\n" +
                               description + "\n" + ending + "Objective Value:  1.10000000e+01\n");
}

/// Statuses go in pairs, whatever else went wrong.
void expectClearStatuses(const Outcome& outcome) {
    using namespace model_status;
    EXPECT_THAT(outcome.ready, AnyOf(0, 1));
    EXPECT_THAT(outcome.solve, AnyOf(0, 1));
    switch (outcome.modelStatus) {
        case noSolutionReturned:
            EXPECT_EQ(outcome.solveStatus, solve_status::capabilityProblem);
            break;
        case errorNoSolution:
            EXPECT_EQ(outcome.solveStatus, solve_status::setupFailure);
            break;
        case untouched:
            EXPECT_EQ(outcome.solveStatus, untouched);
            EXPECT_EQ(outcome.ready + outcome.solve, 1) << "someone must say that it failed";
            break;
        default:
            EXPECT_THAT(outcome.modelStatus,
                        AnyOf(optimal, infeasible, locallyInfeasible, intermediateInfeasible,
                              feasible, integerSolution, integerInfeasible, solvedUnique));
            EXPECT_THAT(outcome.solveStatus,
                        AnyOf(solve_status::normal, solve_status::timeLimit,
                              solve_status::iterationLimit, solve_status::userInterrupt));
    }
}

TEST_F(WholeRunTest, EverySpoiledCallEndsInClearStatusesAndTheNextRunIsAsEver) {
    const Outcome sound = run();
    std::set<std::string> spoiled;
    for (const Proxy* proxy : {&hub, &options}) {
        for (const proxy::Answer answer : {proxy::worst, proxy::failed}) {
            proxy->reset();
            run();
            const std::int64_t nbCalls = proxy->nbCalls();
            for (std::int64_t k = 1; k <= nbCalls; ++k) {
                proxy->reset();
                proxy->mark(k, answer);
                const Outcome outcome = run();
                const std::string name = proxy->spoiled();
                SCOPED_TRACE("call " + std::to_string(k) + " " + name);
                if (name.empty()) {
                    EXPECT_EQ(outcome, sound) << "a trusted call";
                    continue;
                }
                spoiled.insert(name);
                if (name != "nmoModelStatSet" && name != "nmoSolveStatSet") {
                    expectClearStatuses(outcome);
                }
                EXPECT_EQ(huxBinding.nbObjects(), 0);
                EXPECT_EQ(optBinding.nbObjects(), 0);
                EXPECT_EQ(run(), sound);
            }
        }
    }
    for (const char* name : {"huxXCreate", "XCreate", "nevLogStat", "nmoGetVarLowerOne",
                             "nmoGetRhsOne", "optReadDefinition", "nevThreads"}) {
        EXPECT_TRUE(spoiled.count(name)) << name;
    }
}

TEST_F(WholeRunTest, SpoiledAnswersThatHaveTheirOwnEnd) {
    struct Case {
        const char* operation;
        proxy::Answer answer;
        std::int32_t ready, modelStatus, solveStatus;
        const char* message;  // in the log
    };
    const Case cases[] = {
        {"huxXCreate", proxy::failed, 1, untouched, untouched, ""},
        {"XCreate", proxy::failed, 1, untouched, untouched, "*** Error while creating object"},
        {"optReadDefinition", proxy::failed, 1, untouched, untouched, ""},
        {"nmoGetEquTypeOne", proxy::worst, 0, 14, 6, "Unexpected equation type.\n"},
        {"nmoGetRhsOne", proxy::failed, 1, 13, 10, ""},
        {"nevThreads", proxy::worst, 0, 13, 10, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.operation);
        Proxy& proxy =
            std::string(c.operation).starts_with("n") || c.operation[0] == 'h' ? hub : options;
        proxy.mark(c.operation, c.answer);
        const Outcome outcome = run();
        EXPECT_EQ(proxy.spoiled(), c.operation);
        EXPECT_EQ(outcome.ready, c.ready);
        EXPECT_EQ(outcome.modelStatus, c.modelStatus);
        EXPECT_EQ(outcome.solveStatus, c.solveStatus);
        EXPECT_THAT(outcome.log, HasSubstr(c.message));
    }
}

}  // namespace
}  // namespace vex::test
