#include <gtest/gtest.h>

#include <sstream>

#include "readers/lp_reader.hpp"
#include "readers/read_error.hpp"
#include "writers/model_writer.hpp"

/// What the reader makes of a file, as the writer puts it; GLPK and CoinUtils judge the writer.
namespace norv::test {
namespace {

/// The model in the writer's words, or the complaint.
std::string readAndWritten(const std::string& text) {
    const Environment environment;
    ModelBuilder builder;
    std::ostringstream out;
    try {
        const InputText file = InputText::fromMemory("m.lp", text);
        for (const std::string& each : readLp(file, builder)) out << each << '\n';
        writeLp(out, builder.finish(environment));
    } catch (const ReadError& error) {
        return error.what();
    }
    return out.str();
}

TEST(LpReader, takesTheCommonDialect) {
    EXPECT_EQ(
        readAndWritten(
            "\\ comment\nMAXIMUM\n profit: 2e1x1 + 3y - -z[1,2] + 5 + [ - 2 x1^2 + 4 "
            "x1 * y ] / 2\nsuch that\n a: 2 x1 + y <= 10 \\ sides\n -2 <= x1 - y\n <= 8\n "
            "x1 + y =< 4\n -3 + 2 y >= 1 + x1\n q: [ x1 ^ 2 ] + y < 9\n 2 >= y\nBounds\n "
            "x1 <= 4\n -inf <= y <= 5\n z[1,2] free\n w >= 2\n w < 7\n -1 <= n\n s <= 3\n "
            "t = 1\nINTEGERS\n n s\nbin\n b\nsemi-continuous\n s w\nSOS\n one: S1:: y:2 "
            "x1:1\n two: s2:: x1:1 y:2 n:3\nEND\n"),
        "\\ the names x1, x2, ... replace those of the model, as \"z[1,2]\" cannot stand here\n"
        "Maximize\n obj: + 20 x1 + 3 x2 + x3 + [ - 2 x1 ^ 2 + 4 x1 * x2 ] / 2 + 5\nSubject To\n"
        " a: + 2 x1 + x2 <= 10\n e2: + x1 - x2 >= -2\n e3: + x1 + x2 <= 4\n e4: - x1 + 2 x2 >= 4\n"
        " q: + x2 + [ + x1 ^ 2 ] <= 9\n e6: + x2 <= 2\n e2_up: + x1 - x2 <= 8\nBounds\n"
        " 0 <= x1 <= 4\n -inf <= x2 <= 5\n x3 free\n 2 <= x4 <= 7\n -1 <= x5 <= +inf\n"
        " 0 <= x6 <= 3\n x7 = 1\nGeneral\n x5\n x6\nBinary\n x8\nSemi-Continuous\n x4\n x6\nSOS\n"
        " s1: S1:: x1:1 x2:2\n s2: S2:: x1:1 x2:2 x5:3\nEnd\n");
    EXPECT_EQ(readAndWritten("min\nst\n c: x = 1\nbounds\n x <= -1\n"),
              "m.lp:5:7: the upper bound of \"x\" is below 0, its lower bound; the lower bound "
              "stays\nMinimize\n obj: 0 x\nSubject To\n c: + x = 1\nBounds\n 0 <= x <= -1\nEnd\n");
}

TEST(LpReader, namesFaultsByTheirPlace) {
    const struct {
        const char* text;
        const char* complaint;
    } cases[] = {
        {"st\n", "m.lp:1:1: found \"st\", expected minimize or maximize"},
        {"min\n x y\n", "m.lp:2:4: found \"y\", expected the name of a section, or end"},
        {"min x\nst\n c x <= 1\n", "m.lp:3:4: found \"x\", expected <=, = or >="},
        {"min x\nst\n x <> 1\n", "m.lp:3:4: found \"<>\", expected <=, = or >="},
        {"min x\nst\n x <= \nend\n", "m.lp:4:1: found \"end\", expected a number, a variable or ["},
        {"min x\nst\n x * y <= 1\n",
         "m.lp:3:4: found \"*\", expected products in brackets only: [ x ^ 2 + x * y ]"},
        {"min [ x ^ 3 ]\n", "m.lp:1:11: found \"3\", expected the exponent 2"},
        {"min [ x ^ 2 ] / 3\n", "m.lp:1:17: found \"3\", expected 2"},
        {"min x\nst\n [ x ^ 2 ] / 2 <= 1\n",
         "m.lp:3:12: found \"/\", expected no / behind brackets of a row"},
        {"min x\nst\n b = 1 -> x <= 1\n",
         "m.lp:3:8: found \"->\", expected no rows that hold on a condition"},
        {"min x\nst\n x <= 1 <= y\n",
         "m.lp:3:2: found \"x\", expected a number in front of a range"},
        {"min x\nst\n 1 <= x <= y\n", "m.lp:3:12: found \"y\", expected a number behind a range"},
        {"min x\nbounds\n 2 x <= 1\n", "m.lp:3:2: found \"2\", expected one variable"},
        {"min x\nbounds\n x <= y\n", "m.lp:3:7: found \"y\", expected a number"},
        {"min x\nint\n 3\n", "m.lp:3:2: found \"3\", expected the name of a variable"},
        {"min x\nsos\n a: S3:: x:1\n", "m.lp:3:5: found \"S3\", expected S1:: or S2::"},
        {"min x\nsos\n a: S1:: x:1 x:2\n",
         "m.lp:3:2: found \"a\", expected a set without a member that is named twice"},
        {"min 1e999 x\n", "m.lp:1:5: found \"1e999\", expected a number within double precision"},
        {"min inf x\n", "m.lp:1:5: found \"inf\", expected a finite constant"},
        {"min x \x01\n",
         "m.lp:1:7: found \"\\x01\", expected a character that belongs into an .lp file"},
        {"min x\nend\nst\n", "m.lp:3:1: found \"st\", expected nothing after the word end"},
    };
    for (const auto& each : cases) EXPECT_EQ(readAndWritten(each.text), each.complaint);
}

}  // namespace
}  // namespace norv::test
