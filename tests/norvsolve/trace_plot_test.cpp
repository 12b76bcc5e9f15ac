#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "readers/read_error.hpp"
#include "solve/plot/axis.hpp"
#include "solve/plot/trace_plot.hpp"
#include "solve/search_watch.hpp"

namespace norv::test {
namespace {

std::string labels(const Axis& axis) {
    std::string text = axis.isLogarithmic() ? "log" : "";
    for (const Tick& tick : axis.ticks()) text += ' ' + tick.label;
    return text;
}

TEST(Axis, hasRoundTicksAndRoomForAllValues) {
    struct Case {
        std::vector<double> values;
        const char* ticks;
    };
    const Case cases[] = {
        {{0.1, 0.32}, " 0.1 0.15 0.2 0.25 0.3 0.35"},
        {{-416, 0}, " -500 -400 -300 -200 -100 0"},
        {{1e10, 1.4e10}, " 1e+10 1.1e+10 1.2e+10 1.3e+10 1.4e+10"},
        {{42}, " 36 38 40 42 44 46 48"},
        {{0}, " -1 -0.5 0 0.5 1"},
        {{7, 7 + 1e-12}, " 6.2 6.4 6.6 6.8 7 7.2 7.4 7.6 7.8"},
        {{-1e300, 1e300}, " -1e+300 -5e+299 0 5e+299 1e+300"},
        {{1e10, 34512, 3}, "log 1 100 10000 1000000 1e+08 1e+10"},
        {{-1e6, -50, 2}, "log -1000000 -10000 -100 0 100"},
        {{1000, 5, 0}, " 0 200 400 600 800 1000"},
    };
    for (const Case& each : cases) {
        const Axis axis = Axis::around(each.values);
        EXPECT_EQ(labels(axis), each.ticks);
        for (const double value : each.values) {
            EXPECT_GE(axis.position(value), 0.0) << value;
            EXPECT_LE(axis.position(value), 1.0) << value;
        }
    }
    EXPECT_EQ(labels(Axis::between(0.0, 8.06)), " 0 2 4 6 8");
}

std::string pictureOf(const std::string& records) {
    const std::string head = "* solvetrace file t: ID = LocalSolver Instance = \n* fields\n";
    std::ostringstream out;
    writeTracePlot(out, readTrace(InputText::fromMemory("t.trc", head + records)), "a<b & c");
    return out.str();
}

TEST(TracePlot, drawsStepsPointsAndWords) {
    const std::string picture = pictureOf(
        "1, S, 0, 0, na, na\r\n2, T, 0, 10, 100, -100\n3, T, 0, 20, 100, 0\n4, T, 0, 30, 0, 0\n"
        "5, E, 0, 40, 0, 0\n* solvetrace file closed\n");
    for (const char* part : {">a&lt;b &amp; c<", ">best found 0 after 30 s, end after 40 s<",
                             ">time (s)<", ">-50<", ">best bound<"}) {
        EXPECT_THAT(picture, testing::HasSubstr(part));
    }
    // Between 72 and 770 pixels, from a quarter of the time to its end, down at three quarters.
    EXPECT_THAT(picture, testing::HasSubstr("d=\"M246.5 72H595.5V246H770\""));
    // A point for each new value, not for each record.
    const std::size_t first = picture.find("<circle");
    ASSERT_NE(first, std::string::npos);
    EXPECT_EQ(picture.rfind("<circle"), picture.find("<circle", first + 1));
    EXPECT_THAT(pictureOf("1, S, 0, 0, na, na\n2, E, 0, 7200, na, na\n"),
                testing::HasSubstr(">no feasible point in 120 min<"));
    EXPECT_THAT(pictureOf(""), testing::HasSubstr(">no feasible point in 0 s<"));
}

TEST(TracePlot, drawsHowManyConstraintsWereViolated) {
    TraceFile trace = {"t", {{0.0, {}, {}}, {10.0, 3.0, {}}, {20.0, 3.0, {}}}, {}};
    for (const char* line : {"1 s, infeasible, 8 of 9 constraints violated, worst by c || ",
                             "3 s, infeasible, 2 of 9 constraints violated, worst by c || "}) {
        trace.infeasible.push_back(infeasibilityIn(line).value());
    }
    EXPECT_FALSE(infeasibilityIn("1 s, feasible, objective 8 || 3 constraints violated"));
    trace.infeasible[0].seconds = 5.0;
    trace.infeasible[1].seconds = 8.0;
    std::ostringstream out;
    writeTracePlot(out, trace, "t");
    // From a quarter of the time on at 80 % of the height, and to the bottom at the first point.
    EXPECT_THAT(out.str(), testing::HasSubstr("M241.25 141.6H347V350.4H417.5V420\""));
    EXPECT_THAT(out.str(), testing::HasSubstr(">8 of 9 constraints violated, then 2<"));
}

TEST(TracePlot, namesFaultsOfTheTrace) {
    struct Case {
        const char* record;
        const char* complaint;
    };
    const Case cases[] = {
        {"1, S, 0, soon, 1, na", "t.trc:3:10: found \"soon\", expected the time in seconds"},
        {"1, S, 0, 1, 2", "t.trc:3:14: found the end of the line, expected the best bound, or na"},
        {"1, S, 0, 1, nan, na", "t.trc:3:13: found \"nan\", expected the best value found, or na"},
        {"1, S, 0, 2, na, na\n2, T, 0, 1, na, na",
         "t.trc:4:10: found an earlier time, expected times in order"},
    };
    for (const Case& each : cases) {
        try {
            pictureOf(each.record);
            ADD_FAILURE() << "taken: " << each.record;
        } catch (const ReadError& error) {
            EXPECT_STREQ(error.what(), each.complaint);
        }
    }
}

}  // namespace
}  // namespace norv::test
