#include "readers/nl_reader.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <map>

#include "hostapi/codes.hpp"
#include "norv/environment.hpp"
#include "norv/readers/mutation.hpp"
#include "norv/readers/nl_writer.hpp"
#include "readers/nl_model.hpp"
#include "readers/read_error.hpp"

namespace norv::test {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

Model modelOf(const std::string& content, const Environment& environment, NlNames names = {}) {
    const InputText text = InputText::fromMemory("m.nl", content);
    ModelBuilder builder;
    buildModel(readNl(text, std::move(names)), builder);
    return builder.finish(environment);
}

/// The complaint about `content`, or "" when it is read.
std::string complaintAbout(const std::string& content, NlNames names = {}) {
    try {
        const Environment environment;
        static_cast<void>(modelOf(content, environment, std::move(names)));
        return "";
    } catch (const ReadError& error) {
        return error.what();
    }
}

/// Two variables, a row, an objective; `header` replaces lines by number, `body` the segments.
std::string file(const std::string& body, std::map<int, std::string> header = {}) {
    const std::string lines[] = {"g3 1 1 0", " 2 1 1 0 0", " 1 1", " 0 0", " 2 2 2",
                                 " 0 0 0 1", " 0 0 0 0 0", " 2 2", " 0 0", " 0 0 0 0 0"};
    std::string text;
    for (int k = 0; k < 10; ++k)
        text += (header.count(k + 1) > 0 ? header[k + 1] : lines[k]) + "\n";
    return text + body;
}

const std::string rest = "r\n1 4\nb\n3\n3\nk1\n1\nJ0 2\n0 0\n1 0\n";

TEST(NlReader, AllFormsGiveTheSameModel) {
    NlSketch sketch;
    sketch.rows = {"o54 3 v0 n0.5 o2 v1 v2",
                   "o43 v3",
                   "o2 n-1 o41 v0",
                   "l7",
                   "s-3",
                   "o35 o22 v0 n1 v1 v4",
                   "o76 v0 n3",
                   "o78 n2 v0",
                   "o0 n2.5 o5 v0 n2"};
    sketch.logicalRows = {"o21 o28 v0 n0 o23 v1 n1"};
    sketch.objectives = {"o44 v2"};
    sketch.definitions = {"o2 v0 v1", "o44 v3"};
    sketch.withLinearTerms = true;
    const Environment environment;
    const Model text = modelOf(NlWriter(NlForm::text).write(sketch), environment);
    ASSERT_EQ(text.nbRows(), 10);
    EXPECT_TRUE(text.isNonlinear());
    EXPECT_TRUE(text.isQuadratic());
    const std::vector<double> point = {0.5, 2.0, -0.25};
    // Linear terms are x0 + 2 x1 + 3 x2, common expressions add 2 x0 and 2 x0.
    EXPECT_DOUBLE_EQ(text.evaluateRow(0, point).value, 0.5 - 0.5 + 3.75);
    EXPECT_DOUBLE_EQ(text.evaluateRow(1, point).value, std::log(2.0) + 3.75);
    EXPECT_DOUBLE_EQ(text.evaluateRow(6, point).value, 0.125 + 3.75);
    EXPECT_DOUBLE_EQ(text.evaluateRow(7, point).value, std::sqrt(2.0) + 3.75);
    EXPECT_EQ(text.rightHandSide(3), -7.0);
    // A constant that would outweigh the side stays where it is.
    EXPECT_EQ(text.rightHandSide(0), -0.5);
    EXPECT_EQ(text.rightHandSide(8), 0.0);
    EXPECT_EQ(text.evaluateRow(8, point).value, 2.75 + 3.75);
    EXPECT_EQ(text.rowType(9), hostapi::equation_type::logic);
    EXPECT_EQ(text.rightHandSide(9), 1.0);
    EXPECT_EQ(text.evaluateRow(9, point).value, 0.0);
    for (const NlForm form : {NlForm::littleEndian, NlForm::bigEndian}) {
        const Model binary = modelOf(NlWriter(form).write(sketch), environment);
        ASSERT_EQ(binary.nbRows(), text.nbRows());
        EXPECT_EQ(binary.nbCoefficients(), text.nbCoefficients());
        for (std::int32_t i = 0; i < text.nbRows(); ++i)
            EXPECT_EQ(binary.evaluateRow(i, point).value, text.evaluateRow(i, point).value) << i;
        EXPECT_EQ(binary.evaluateObjective(point).value, text.evaluateObjective(point).value);
    }
}

TEST(NlReader, UnderstandsBoundsStartAndObjective) {
    const std::string content = file(
        "C0\nn1.5\nO0 1\nn-2\nx1\n1 2.5\nd1\n0 7\nS0 1 priority\n0 3\nS5 1 scale\n0 2.5\n"
        "r\n0 -1 5\nb # bounds\n4 3\n1 2\nk1\n1\nJ0 2\n0 2\n1 -1\nG0 1\n1 3\n");
    const Environment environment;
    const Model model = modelOf(content, environment);
    EXPECT_EQ(model.sense(), hostapi::objective_sense::maximise);
    EXPECT_EQ(model.lower(0), 3.0);
    EXPECT_EQ(model.upper(0), 3.0);
    EXPECT_EQ(model.lower(1), -infinity);
    EXPECT_EQ(model.levels()[0], 3.0);
    EXPECT_EQ(model.levels()[1], 2.0);
    // -1 <= 2 x - y + 1.5 <= 5
    ASSERT_EQ(model.nbRows(), 2);
    EXPECT_EQ(model.rightHandSide(0), -2.5);
    EXPECT_EQ(model.rightHandSide(1), 3.5);
    EXPECT_EQ(model.evaluateRow(1, std::vector{1.0, 2.0}).value, 0.0);
    EXPECT_EQ(model.evaluateObjective(std::vector{1.0, 2.0}).value, 4.0);
    EXPECT_FALSE(model.isNonlinear());
}

TEST(NlReader, PlacesOfVariablesTellTheirType) {
    // Groups of two or three: in both, in rows, in objectives, then linear ones; one integer each.
    NlHeader header;
    header.nbVariables = 12;
    header.nbNonlinearInBoth = 2;
    header.nbNonlinearInRows = 4;
    header.nbNonlinearInObjectives = 6;
    header.nbIntegerInBoth = header.nbIntegerInRows = header.nbIntegerInObjectives = 1;
    header.nbBinary = 2;
    header.nbInteger = 1;
    std::string places;
    for (std::int32_t j = 0; j < header.nbVariables; ++j) places += header.isInteger(j) ? 'i' : '.';
    EXPECT_EQ(places, ".i.i.i...iii");
    header.nbNonlinearInObjectives = 2;  // none in objectives alone
    header.nbIntegerInObjectives = 0;
    places.clear();
    for (std::int32_t j = 0; j < header.nbVariables; ++j) places += header.isInteger(j) ? 'i' : '.';
    EXPECT_EQ(places, ".i.i.....iii");
}

TEST(NlReader, NamesAndWarningsReachTheModel) {
    const std::string content =
        file("O0 0\nv0\nO1 0\no49 v0\n" + rest, {{2, " 2 1 2 1 0"}, {3, " 1 2"}});
    const InputText text = InputText::fromMemory("m.nl", content);
    const NlInstance instance = readNl(text, {{"capacity"}, {"x[1]", "x[2]"}});
    EXPECT_EQ(instance.warnings,
              (std::vector<std::string>{
                  "m.nl: found 0 ranges and 0 equalities, the header announces 1 and 0",
                  "m.nl: found 2 objectives, number 1 is taken"}));
    ModelBuilder builder;
    buildModel(instance, builder);
    const Environment environment;
    const Model model = builder.finish(environment);
    EXPECT_EQ(model.rowName(0), "capacity");
    EXPECT_EQ(model.variableName(1), "x[2]");
}

TEST(NlReader, SaysWhatItFoundWhere) {
    const std::string objective = "O0 0\nn0\n";
    const std::pair<std::string, const char*> cases[] = {
        {"", "m.nl:1:1: found the end of the file, expected \"g\" or \"b\", the form of the file"},
        {"NAME x\n",
         "m.nl:1:1: found a file of another kind, expected \"g\" or \"b\" as the first character "
         "of an .nl file"},
        {"g3\n 2 1\n", "m.nl:2:1: found 2 numbers, expected 3: variables, rows, objectives"},
        {"g3\n 2 1 1\n", "m.nl:3:1: found the end of the file, expected ten lines of header"},
        {file("", {{2, " 2 x 1"}}), "m.nl:2:4: found no count, expected a number from 0"},
        {file("", {{2, " 2 -1 1"}}), "m.nl:2:4: found no count, expected a number from 0"},
        {file("", {{2, " 2000000000 1 1"}}),
         "m.nl:2:1: found 2000000000 items, expected no more than the file has room for"},
        {file("", {{3, " 0 0 1 0"}}),
         "m.nl:3:1: found complementarity conditions, expected rows of other kinds: these are not "
         "supported"},
        {file("", {{5, " 3 2 2"}}),
         "m.nl:5:1: found more variables than there are, expected at most 2, no more in both than "
         "in one"},
        {file("", {{7, " 1 0 0 0 0"}}),
         "m.nl:7:1: found more discrete variables than there are, expected as many as the lines "
         "above allow"},
        {file("", {{1, "b3"}, {6, " 0 0 7 1"}}),
         "m.nl:6:1: found arithmetic of kind 7, expected 1 or 2 in a binary file"},
        {file("Q0\n"),
         "m.nl:11:1: found \"Q\", expected a segment: one of C L O V F S d x r b k K "
         "J G"},
        {file("C1\nn0\n"), "m.nl:11:2: found 1, expected the number of a row from 0 to 0"},
        {file("C0\nn0\nC0\n"), "m.nl:13:2: found a second segment C, expected one for each row"},
        {file("C0\no0\nv0\n"),
         "m.nl:14:1: found the end of the file, expected an expression: o, n, s, l, v, f or h"},
        {file("C0\nv2\n"), "m.nl:12:2: found 2, expected the number of a variable from 0 to 1"},
        {file("C0\no79\n"),
         "m.nl:12:1: found operator o79, expected the number of an operator, 0 "
         "to 78"},
        {file("C0\nnan\n"), "m.nl:12:2: found \"an\", expected a finite number after n"},
        {file("C0\nn1x\n"), "m.nl:12:2: found \"1x\", expected a finite number after n"},
        {file("C0\nninf\n"),
         "m.nl:12:2: found an infinite number, expected a finite number after "
         "n"},
        {file("C0\no54\n-1\n"), "m.nl:13:1: found -1, expected a count of operands from 0 to 4"},
        {file("C0\no0\nv0\no49\nv1\n"),
         "m.nl:14:1: found operator o49 (atan) in row e1, expected operators that this host can "
         "express"},
        {file("C0\nf0 1\nv0\n", {{6, " 0 1 0 1"}}),
         "m.nl:12:1: found imported function \"\" in row e1, expected operators that this host can "
         "express"},
        {file("F0 1 -1 gsl_sf\nC0\nf0 1\nv0\n", {{6, " 0 1 0 1"}}),
         "m.nl:13:1: found imported function \"gsl_sf\" in row e1, expected operators that this "
         "host can express"},
        {file("C0\nh3:abc\n"),
         "m.nl:12:1: found the string \"abc\" in row e1, expected operators that this host can "
         "express"},
        {file("O0 0\no2\nv0\no57\nv1\nn2\n"),
         "m.nl:14:1: found operator o57 (round) in the objective, expected operators that this "
         "host can express"},
        {file("C0\nv2\n", {{10, " 1 0 0 0 0"}}),
         "m.nl:12:2: found common expression v2 before its segment, expected segments V before "
         "their use"},
        {file("O0 2\nn0\n"),
         "m.nl:11:4: found 2, expected 0 (minimise) or 1 (maximise) from 0 to "
         "1"},
        {file(objective + "r\n5 1 1\n"),
         "m.nl:14:1: found another kind of bound, expected 0 to 4; complementarity conditions are "
         "not supported"},
        {file(objective + "r\n3\nb\n2 inf\n3\n"),
         "m.nl:16:1: found a bound that nothing can meet, expected bounds that leave room"},
        {file(objective + "b\n3\n3\n"),
         "m.nl:16:1: found the end of the file, expected a segment r, the bounds of the rows"},
        {file(objective + "r\n3\nb\n3\n3\nk1\n3\n"),
         "m.nl:19:1: found 3, expected a count of entries from 0 to 2"},
        {file(objective + "r\n3\nb\n3\n3\nk1\n1\nJ0 1\n0 1\n"),
         "m.nl: found 1 entries in segments J, expected 2 as in the header"},
        {file(objective + "r\n3\nb\n3\n3\nk1\n2\nJ0 2\n0 1\n1 1\n"),
         "m.nl: found 1 entries of variable 0 in segments J, expected 2 as in segment k"},
        {file(objective + "S0 1 sosno\n2 1\n"),
         "m.nl:14:1: found 2, expected the number of a variable from 0 to 1"},
        {file(objective + "S4 1 ref\n1 inf\n"),
         "m.nl:14:3: found an infinite number, expected a finite value"},
        {file(objective + "J0 3\n0 1e308\n1 1e308\n0 1e308\n"),
         "m.nl:16:3: found a coefficient of variable x1 that adds up beyond double precision with "
         "earlier ones, expected a finite sum"},
        {file(objective + "G0 2\n1 -1e308\n1 -1e308\n"),
         "m.nl:15:3: found a coefficient of variable x2 that adds up beyond double precision with "
         "earlier ones, expected a finite sum"},
    };
    for (const auto& [content, expected] : cases) EXPECT_EQ(complaintAbout(content), expected);
    EXPECT_EQ(complaintAbout(file(objective + rest)), "");
    const std::string named = complaintAbout(file("C0\no51\nv0\n"), {{"capacity"}, {}});
    EXPECT_NE(named.find("(asin) in row capacity"), std::string::npos) << named;
    NlSketch sketch;
    EXPECT_EQ(complaintAbout(NlWriter(NlForm::text).write(sketch) +
                             "S0 3 sosno\n0 -7\n1 -7\n2 -7\nS0 2 ref\n0 5\n2 1\nS0 1 ref\n2 5\n"),
              "m.nl: special ordered set \"sosno -7\": found weight 5 for both \"x1\" and \"x3\", "
              "expected suffix ref to tell their order");
    sketch.rows = {"o49 v0"};
    const std::string binary = NlWriter(NlForm::bigEndian).write(sketch);
    EXPECT_EQ(complaintAbout(binary),
              "m.nl: byte " + std::to_string(binary.find("C") + 5) +
                  ": found operator o49 (atan) in row e1, expected operators that this host can "
                  "express");
}

TEST(NlReader, GivesUpOnCommonExpressionsThatExplode) {
    NlSketch sketch;
    sketch.rows = {"v62"};
    sketch.definitions = {"o41 v0"};
    for (int k = 3; k < 62; ++k) {
        const std::string before = " v" + std::to_string(k);
        sketch.definitions.push_back("o2" + before + before);
    }
    EXPECT_EQ(complaintAbout(NlWriter(NlForm::text).write(sketch)),
              "m.nl: row e1: found common expressions that take more than 100000000 instructions "
              "when written out for each use, expected fewer");
}

TEST(NlReader, ReadsAMillionLevels) {
    constexpr int depth = 1'000'000;
    std::string body = "C0\n";
    for (int k = 0; k < depth; ++k) body += k % 2 == 0 ? "o0\nn1\n" : "o15\n";
    body += "v0\nO0 0\nn0\n" + rest;
    const Environment environment;
    const Model model = modelOf(file(body), environment);
    EXPECT_EQ(model.evaluateRow(0, std::vector{0.0, 0.0}).value, depth / 2);
}

void mutate(const std::string& content, std::uint32_t seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const std::string complaint = complaintAbout(mutated(content, seed));
    EXPECT_EQ(complaint.find('\n'), std::string::npos) << complaint;
}

TEST(NlReader, DamagedFilesEndInAModelOrOneLine) {
    NlSketch sketch;
    sketch.rows = {"o54 3 v0 n0.5 o2 v1 v2", "o43 v3", "o64 2 n1 n0 n2 v0", "o11 2 v0 s2",
                   "o5 v1 o35 o22 v0 l1 n2 v4"};
    sketch.logicalRows = {"o74 3 v0 v1 v2"};
    sketch.definitions = {"o2 v0 v1", "o44 v3"};
    sketch.withLinearTerms = true;
    for (const NlForm form : {NlForm::text, NlForm::littleEndian, NlForm::bigEndian}) {
        const std::string content = NlWriter(form).write(sketch);
        ASSERT_EQ(complaintAbout(content), "");
        for (std::size_t length = 0; length + 2 < content.size(); ++length)
            EXPECT_NE(complaintAbout(content.substr(0, length)), "") << length;
        for (std::uint32_t seed = 1; seed <= 2000; ++seed) mutate(content, seed);
    }
}

}  // namespace
}  // namespace norv::test
