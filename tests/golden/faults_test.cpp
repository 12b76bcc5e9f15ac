#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "double/exchange.hpp"
#include "double/optimizer_double.hpp"
#include "double/whole_call.hpp"
#include "host/host_interfaces.hpp"

/// Whole runs in which one call after the other goes wrong.

namespace {

using doubles::exchange;
using doubles::failingAllocation;
using doubles::Fault;
using Lines = std::vector<std::string>;

/// Every kind of row and every file. All decisions are fixed: a run leaves the levels as they were.
const Lines everything = {
    "cont x in 4 4 ; int n in 2 2 ; cont d in 0 9 ; max x + n * n + d",
    "c1 : x + n <= 9 ; c2 : [ 1:x 20:10 ] >= 1 ; def : 2 d + x = 8",
    "option aggrvars 1 | solvetrace $tmp/trace | dumpmodel $tmp/dump | writelsp $tmp/lsp",
    "search 0 3 4 1 status=3",
    "whole",
    "own"};

/// Number behind the last `mark`; -1: there is none.
int lastNumber(const std::string& text, const std::string& mark) {
    const std::size_t at = text.rfind(mark);
    return at == std::string::npos ? -1 : std::stoi(text.substr(at + mark.size()));
}

/// Statuses go in pairs, and without statuses a result says that the call failed.
void expectClearEnd(const std::string& text) {
    const int modelStatus = lastNumber(text, "model=");
    const int solveStatus = lastNumber(text, "solve=");
    const bool failed = text.find("->1") != text.npos || text.find("->3") != text.npos;
    const bool isClear = modelStatus == -1   ? failed
                         : modelStatus == 14 ? solveStatus == 6
                         : modelStatus == 13
                             ? solveStatus == 10
                             : std::set({1, 4, 5, 6, 7, 8, 10, 16}).count(modelStatus) == 1 &&
                                   std::set({1, 2, 3, 8}).count(solveStatus) == 1;
    EXPECT_TRUE(isClear) << modelStatus << ", " << solveStatus;
}

TEST(Faults, EndInClearStatusesAndLeaveNothingBehind) {
    const std::string sound = doubles::runCase(everything);
    std::set<std::string> spoiled;
    for (const Fault fault : {Fault::low, Fault::high, Fault::thrown}) {
        for (std::int64_t k = 1;; ++k) {
            testing::internal::CaptureStderr();
            const std::string text =
                doubles::runCase(everything, [&] { exchange().spoil(k, fault); });
            testing::internal::GetCapturedStderr();
            const std::string name = exchange().spoiled();
            if (name.empty()) break;
            SCOPED_TRACE(std::to_string(k) + ": " + name + "\n" + text);
            spoiled.insert(name);
            if (name != "nmoModelStatSet" && name != "nmoSolveStatSet") expectClearEnd(text);
            EXPECT_EQ(doubles::nbSolvers(), 0);
            EXPECT_EQ(vex::huxBinding.nbObjects(), 0);
            EXPECT_EQ(vex::optBinding.nbObjects(), 0);
            if (k % 16 == 0) {
                ASSERT_EQ(doubles::runCase(everything), sound);
            }
        }
    }
    EXPECT_GT(spoiled.size(), 60U);
}

/// The calls since the last solver was there, wherever the lines break.
std::string lastSetupAndSolve(const std::string& text) {
    std::string calls = text.substr(text.rfind("ls_set_verbosity"));
    std::replace(calls.begin(), calls.end(), '\n', ' ');
    return calls;
}

TEST(Faults, LeaveTheLinkObjectFitForTheNextRun) {
    Lines twice = everything;  // but with the host's option object: what it has read, stays
    twice.pop_back();
    twice.emplace_back("hide ls_expr_set*");  // starting values: what the first run left
    twice.emplace_back("do ready solve");
    doubles::runCase(twice);  // the first run of a process allocates what stays
    doubles::runCase(twice, [] { exchange().spoil(failingAllocation = 1000000, Fault::none); });
    const int nbAllocations = 1000000 - failingAllocation;
    const int nbCalls = static_cast<int>(exchange().nbCalls());
    EXPECT_GT(nbAllocations, 50);
    failingAllocation = 0;
    twice.back() = "do ready solve ready solve vexFree";
    const std::string ending = lastSetupAndSolve(doubles::runCase(twice));
    const auto expectEnding = [&](const std::function<void()>& spoil, int number) {
        testing::internal::CaptureStderr();
        const std::string text = doubles::runCase(twice, spoil);
        testing::internal::GetCapturedStderr();
        ASSERT_EQ(lastSetupAndSolve(text), ending) << number << ": " << exchange().spoiled();
    };
    for (int k = 1; k <= nbCalls; ++k) {
        const Fault fault = k % 2 == 0 ? Fault::low : Fault::thrown;
        expectEnding([k, fault] { exchange().spoil(k, fault); }, k);
    }
    for (int k = 1; k <= nbAllocations; ++k) expectEnding([k] { failingAllocation = k; }, -k);
}

}  // namespace
