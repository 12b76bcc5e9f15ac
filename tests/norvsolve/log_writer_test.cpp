#include <gtest/gtest.h>

#include <sstream>

#include "solve/log_writer.hpp"

namespace norv::test {
namespace {

TEST(LogWriter, bringsTextToItsReader) {
    struct Case {
        const char* what;
        int columns;
        std::vector<const char*> pieces;
        const char* seen;
    };
    const Case cases[] = {
        {"a file gets the text as it is",
         0,
         {"1 s", " || ", "9\n", "2 s || 8\n\nend\n"},
         "1 s || 9\n2 s || 8\n\nend\n"},
        {"progress takes turns on one line",
         40,
         {"1 s, 10", " || ", "9\n", "2 s || 8\n"},
         "\r1 s, 10 || 9\r2 s || 8    \n"},
        {"a message goes below the progress",
         40,
         {"a || b\n", "\nStopped.\n", "c || d\n"},
         "\ra || b\n\nStopped.\n\rc || d\n"},
        {"a long line is cut to the width",
         8,
         {"123456789 || 1\n", "1 || 2\n"},
         "\r1234567\r1 || 2 \n"},
        {"an open line is not lost", 40, {"a || b\n", "half"}, "\ra || b\nhalf\n"},
    };
    for (const Case& each : cases) {
        std::ostringstream out;
        {
            LogWriter writer(out, [&each] { return each.columns; });
            for (const char* piece : each.pieces) writer.write(piece);
        }
        EXPECT_EQ(out.str(), each.seen) << each.what;
    }
}

TEST(LogWriter, followsATerminalThatGetsNarrower) {
    std::ostringstream out;
    int columns = 40;
    LogWriter writer(out, [&columns] { return columns; });
    writer.write("0123456789 || 9\n");
    columns = 5;
    writer.write("a || b\n");
    writer.finishLine();
    EXPECT_EQ(out.str(), "\r0123456789 || 9\ra ||\n");
}

}  // namespace
}  // namespace norv::test
