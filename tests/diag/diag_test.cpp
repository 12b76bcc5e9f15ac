#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>

#include "diag/model_dump.hpp"
#include "diag/number_text.hpp"
#include "diag/solve_trace.hpp"
#include "double/exchange.hpp"

/// What whole calls do not reach.

namespace {

using localsolver::LSExpression;

std::string printed(const char* format, double value) {
    char text[512];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

TEST(NumberText, IsWhatPrintfWritesInThePlainLocale) {
    std::mt19937_64 generator(20);
    for (int k = 0; k < 4000; ++k) {
        // Half of them short numbers, where digits are dropped.
        const double value = k % 2 == 0 ? std::bit_cast<double>(generator())
                                        : std::round(std::ldexp(1.0, k / 100)) / 1000 * (k % 5);
        if (std::isnan(value)) continue;
        ASSERT_EQ(vex::scientificText(value, 8, 15), printed("%15.8e", value));
        ASSERT_EQ(vex::generalText(value, 6), printed("%g", value));
        ASSERT_EQ(vex::generalText(value, 10), printed("%.10g", value));
    }
    EXPECT_EQ(vex::scientificText(std::nan(""), 8, 15), "            nan");
    EXPECT_EQ(vex::generalText(-HUGE_VAL, 6), "-inf");
}

TEST(ModelDump, NamesEveryOperator) {
    std::ostringstream stream;
    for (int op = -1; op <= 37; ++op) vex::writeOperatorName(stream, op) << ' ';
    EXPECT_EQ(
        stream.str(),
        "lsop-1 b x c sum sub prod max min eq neq geq leq gt lt if not and or xor abs dist "
        "div mod array at scalarprod ceil floor round sqrt log exp pow cos sin tan i lsop37 ");
}

TEST(ModelDump, FollowsDeepExpressionsAndStopsWhenTheStreamFails) {
    const localsolver::LocalSolver solver;
    const localsolver::LSModel model = solver.getModel();
    LSExpression e = model.createExpression(LS_OP_BOOL);
    constexpr std::size_t depth = 100000;
    for (std::size_t k = 0; k < depth; ++k) {
        const LSExpression operand = e;
        e = model.createExpression(LS_OP_NOT);
        e.addOperand(operand);
    }
    std::ostringstream stream;
    vex::writeExpression(stream, e);
    EXPECT_EQ(stream.str().size(), depth * std::string("not()").size() + 1);

    model.addObjective(e, LS_MINIMIZE);
    model.addConstraint(e);
    stream.setstate(std::ios::badbit);
    doubles::exchange().reset();
    vex::dumpModel(stream, model);
    vex::writeExpression(stream, e);
    EXPECT_LT(doubles::exchange().nbCalls(), 10);
}

struct Record {
    char series = 0;
    double seconds = 0.0;
    std::string rest;
};

std::vector<Record> recordsOf(const std::string& path) {
    std::ifstream file(path);
    std::vector<Record> records;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        Record r;
        std::string number, node;
        if (words >> number >> r.series >> node >> node >> r.seconds && std::getline(words, r.rest))
            records.push_back(r);
    }
    return records;
}

TEST(SolveTrace, WritesTimeRecordsWhenTheyAreDue) {
    vex::SolveTrace::Subject subject;
    subject.fileName = testing::TempDir() + "solve_trace_test.txt";
    subject.instanceName = "blend";
    subject.infinity = 1e300;
    subject.timeInterval = 0.004;
    std::unique_ptr<vex::SolveTrace> trace;
    ASSERT_EQ(vex::SolveTrace::create(trace, subject), 0);
    // Every call leaves the file as it should be if the process ended then.
    std::string head;
    std::getline(std::ifstream(subject.fileName), head);
    EXPECT_TRUE(head.ends_with(": ID =  Instance = blend")) << head;
    std::vector<Record> records;
    for (int k = 0; k < 10000000 && records.size() < 4; ++k) {
        trace->update(0, -2.5, 4.0);
        records = recordsOf(subject.fileName);
    }
    ASSERT_EQ(records.size(), 4U);
    EXPECT_LT(records[0].seconds, 60.0);
    for (std::size_t k = 1; k < 4; ++k) {
        EXPECT_EQ(records[k].series, 'T');
        EXPECT_EQ(records[k].rest, ", 4, -2.5");
        EXPECT_GE(records[k].seconds, records[k - 1].seconds + 0.0039);
    }
    trace->finish(7, 1e300, std::nan(""));
    EXPECT_EQ(recordsOf(subject.fileName).back().rest, ", na, na");
    vex::SolveTrace::close(trace);
    vex::SolveTrace::close(trace);
    EXPECT_EQ(trace, nullptr);
}

}  // namespace
