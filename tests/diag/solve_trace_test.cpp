#include "diag/solve_trace.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <string>

namespace {

using vex::SolveTrace;

constexpr double infinity = std::numeric_limits<double>::infinity();

struct TraceFile {
    TraceFile() {
        subject.fileName = path;
        subject.solverId = "LocalSolver";
        subject.infinity = 1e300;
    }
    ~TraceFile() { std::remove(path.c_str()); }
    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    /// The file with every number of seconds, which no test can foresee, replaced by "t".
    [[nodiscard]] std::string text() const {
        std::ifstream file(path);
        std::string all;
        for (std::string line; std::getline(file, line);) {
            std::size_t seconds = 0;
            for (int field = 0; field < 3 && line[0] != '*'; ++field)
                seconds = line.find(", ", seconds) + 2;
            if (seconds > 0) line.replace(seconds, line.find(',', seconds) - seconds, "t");
            all += line + "\n";
        }
        return all;
    }

    const std::string path = testing::TempDir() + "solve_trace_test.txt";
    SolveTrace::Subject subject;
    std::unique_ptr<SolveTrace> trace;
};

TEST(SolveTrace, WritesHeaderRecordsAndClosingLine) {
    TraceFile file;
    file.subject.optionFile = 2;
    ASSERT_EQ(SolveTrace::create(file.trace, file.subject), 0);
    file.trace->update(0, -infinity, infinity);
    file.trace->update(0, -infinity, 1.0 / 3.0);
    file.trace->finish(0, -infinity, 12345678901.5);
    SolveTrace::close(file.trace);
    EXPECT_EQ(file.trace, nullptr);
    EXPECT_EQ(file.text(), "* solvetrace file " + file.path +
                               ": ID = LocalSolver.2 Instance = \n"
                               "* fields are lineNum, seriesID, node, seconds, bestFound, "
                               "bestBound\n"
                               "1, S, 0, t, na, na\n"
                               "2, E, 0, t, 1.23456789e+10, na\n"
                               "* solvetrace file closed\n");
}

TEST(SolveTrace, StartsLateWhenNothingWasReported) {
    TraceFile file;
    file.subject.instanceName = "blend";
    ASSERT_EQ(SolveTrace::create(file.trace, file.subject), 0);
    file.trace->finish(7, 1e300, std::numeric_limits<double>::quiet_NaN());
    SolveTrace::close(file.trace);
    SolveTrace::close(file.trace);
    EXPECT_NE(file.text().find(": ID = LocalSolver Instance = blend\n"), std::string::npos);
    EXPECT_NE(file.text().find("\n1, S, 7, t, na, na\n2, E, 7, t, na, na\n"), std::string::npos);
}

TEST(SolveTrace, WritesTimeRecordsWhenTheyAreDue) {
    TraceFile file;
    file.subject.timeInterval = 1e-9;
    ASSERT_EQ(SolveTrace::create(file.trace, file.subject), 0);
    file.trace->update(0, -2.5, 4.0);
    EXPECT_EQ(file.text().find(", T,"), std::string::npos) << "none with the first record";
    std::string text;
    for (int k = 0; k < 1000000 && text.find(", T,") == std::string::npos; ++k) {
        file.trace->update(0, -2.5, 4.0);
        text = file.text();
    }
    EXPECT_NE(text.find("\n2, T, 0, t, 4, -2.5\n"), std::string::npos) << text;
}

TEST(SolveTrace, ReportsAFileThatCannotBeOpened) {
    TraceFile file;
    file.subject.fileName = testing::TempDir() + "no/such/folder/trace";
    EXPECT_EQ(SolveTrace::create(file.trace, file.subject), 3);
    EXPECT_EQ(file.trace, nullptr);
}

}  // namespace
