#include "diag/solve_trace.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <string>

namespace {

using vex::SolveTrace;

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

TEST(SolveTrace, StartsLateWhenNothingWasReported) {
    TraceFile file;
    file.subject.instanceName = "blend";
    ASSERT_EQ(SolveTrace::create(file.trace, file.subject), 0);
    // Every call leaves the file as it should be if the process ended then.
    EXPECT_NE(file.text().find(": ID = LocalSolver Instance = blend\n"), std::string::npos);
    file.trace->finish(7, 1e300, std::numeric_limits<double>::quiet_NaN());
    EXPECT_NE(file.text().find("\n1, S, 7, t, na, na\n2, E, 7, t, na, na\n"), std::string::npos);
    SolveTrace::close(file.trace);
    SolveTrace::close(file.trace);
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

}  // namespace
