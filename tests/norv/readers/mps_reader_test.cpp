#include "readers/mps_reader.hpp"

#include <gtest/gtest.h>

#include <string>

#include "norv/readers/mps_text.hpp"
#include "readers/mps_layout.hpp"
#include "readers/read_error.hpp"

namespace norv::test {
namespace {

std::string read(const std::string& content) {
    try {
        const InputText text = InputText::fromMemory("m", content);
        const MpsInstance instance = readMps(text);
        std::string result = describe(instance);
        for (const std::string& warning : instance.warnings) result += "\n" + warning;
        return result;
    } catch (const ReadError& error) {
        return error.what();
    }
}

const std::string rowsOf = " | c1: -inf <= + x + y <= 0 | c2: 0 <= <= inf | c3: 0 <= <= 0";

struct Case {
    const char* what;
    std::string text;
    std::string expected;
};

void expectAll(const std::vector<Case>& cases) {
    for (const Case& each : cases) EXPECT_EQ(read(each.text), each.expected) << each.what;
}

TEST(MpsReader, takesBoundsOfEveryKind) {
    const std::string free = " | 0 <= y <= inf";
    const auto bounded = [&](const char* what, const char* lines, const std::string& x,
                             const std::string& warning = {}) {
        std::string expected = "min 0 + x + y" + rowsOf;
        expected.append(" | ").append(x).append(free);
        if (!warning.empty()) expected.append("\nm:").append(warning);
        return Case{what, around("BOUNDS\n" + std::string(lines)), expected};
    };
    expectAll({
        bounded("lower and upper", " LO b x -2\n UP b x 5\n", "-2 <= x <= 5"),
        bounded("a set without a name", " UP x 5\n", "0 <= x <= 5"),
        bounded("fixed, exponent d", " FX b x 1D1\n", "10 <= x <= 10"),
        bounded("free", " FR b x\n", "-inf <= x <= inf"),
        bounded("free without a set", " FR x\n", "-inf <= x <= inf"),
        bounded("minus infinity keeps the upper bound", " UP b x 3\n MI b x\n", "-inf <= x <= 3"),
        bounded("plus infinity", " UP b x 3\n PL b x\n", "0 <= x <= inf",
                "12:1: the upper bound of \"x\" is given again: the later one is taken"),
        bounded("binary", " BV b x\n", "0 <= x <= 1 bin"),
        bounded("binary with a value, without a set", " BV x 1\n", "0 <= x <= 1 bin"),
        bounded("binary that a later bound widens", " BV b x\n UP b x 4\n", "0 <= x <= 4 int",
                "12:1: the upper bound of \"x\" is given again: the later one is taken"),
        bounded("integer bounds", " LI b x 2\n UI b x 7\n", "2 <= x <= 7 int"),
        bounded("semi-continuous", " LO b x 2\n SC b x 9\n", "2 <= x <= 9 semi"),
        bounded("semi-continuous without an upper bound", " SC b x\n", "0 <= x <= inf semi"),
        bounded("semi-integer", " SI b x 9\n", "0 <= x <= 9 semi int"),
        bounded("infinities in many spellings", " LO b x -1e30\n UP b x Infinity\n",
                "-inf <= x <= inf"),
        bounded("a negative upper bound alone frees the lower one", " UP b x -4\n",
                "-inf <= x <= -4",
                "11:1: column \"x\" has a negative upper bound and no lower one: its lower bound "
                "is taken as minus infinity"),
        bounded("a lower bound after a negative upper one stays", " UP b x -4\n LO b x -6\n",
                "-6 <= x <= -4"),
        bounded("negative zero is no negative upper bound", " UP b x -0.0\n", "0 <= x <= 0"),
        bounded("of several sets the first", " UP b x 5\n UP c x 3\n UP c y 3\n", "0 <= x <= 5",
                "12:5: set \"c\" is not used: the first set, \"b\", is taken"),
    });
}

TEST(MpsReader, takesRightHandSidesAndRanges) {
    const auto sided = [&](const char* what, const char* lines, const char* sides,
                           const char* constant = "0") {
        std::string expected = "min " + std::string(constant) + " + x + y" + sides;
        return Case{what, around(lines), expected + " | 0 <= x <= inf | 0 <= y <= inf"};
    };
    expectAll({
        sided("two a line, with a set", "RHS\n r c1 4 c2 +1.5\n",
              " | c1: -inf <= + x + y <= 4 | c2: 1.5 <= <= inf | c3: 0 <= <= 0"),
        sided("no set; the objective's is minus the constant", "RHS\n cost -7 c3 2\n",
              " | c1: -inf <= + x + y <= 0 | c2: 0 <= <= inf | c3: 2 <= <= 2", "7"),
        sided("ranges of all rows", "RHS\n r c1 4 c2 1\nRANGES\n r c1 3 c2 -2\n r c3 5\n",
              " | c1: 1 <= + x + y <= 4 | c2: 1 <= <= 3 | c3: 0 <= <= 5"),
        sided("a negative range of an equality reaches down", "RANGES\n r c3 -5\n",
              " | c1: -inf <= + x + y <= 0 | c2: 0 <= <= inf | c3: -5 <= <= 0"),
        sided("a range of 0", "RANGES\n r c3 0 c1 0\n",
              " | c1: 0 <= + x + y <= 0 | c2: 0 <= <= inf | c3: 0 <= <= 0"),
    });
}

TEST(MpsReader, takesQuadraticSections) {
    const std::string columns = " | 0 <= x <= inf | 0 <= y <= inf";
    const std::string objective = "min 0 + x + y";
    const std::string notSymmetric =
        ": the matrix is not symmetric in \"x\" and \"y\": its two entries are averaged";
    expectAll({
        {"one triangle, halved", around("QUADOBJ\n x x 4 y 3\n y y 2\n"),
         objective + " + 2 x*x + 3 x*y + y*y" + rowsOf + columns},
        {"both triangles, halved", around("QMATRIX\n x x 4\n x y 3\n y x 3\n"),
         objective + " + 2 x*x + 3 x*y" + rowsOf + columns},
        {"both triangles that differ", around("QMATRIX\n x y 3\n y x 5\n"),
         objective + " + 4 x*y" + rowsOf + columns + "\nm:11:4" + notSymmetric},
        {"a row's, not halved", around("QCMATRIX c2\n x x 4\n x y 3\n y x 3\n"),
         objective +
             " | c1: -inf <= + x + y <= 0 | c2: 0 <= + 4 x*x + 6 x*y <= inf | c3: 0 <= <= 0" +
             columns},
        {"a row's triangle, halved", around("QSECTION c2\n x x 4\n y x 3\n"),
         objective +
             " | c1: -inf <= + x + y <= 0 | c2: 0 <= + 2 x*x + 3 x*y <= inf | c3: 0 <= <= 0" +
             columns},
        {"a pair of one triangle twice", around("QUADOBJ\n x y 3\n y x 2\n"),
         objective + " + 5 x*y" + rowsOf + columns +
             "\nm:12:4: found the entry of \"x\" and \"y\" once more: the entries are added"},
        {"a pair of both triangles thrice", around("QMATRIX\n x y 3\n y x 3\n x y 1\n"),
         "m:13:4: found the entry of \"x\" and \"y\" once more"},
        {"a row twice", around("QUADOBJ\n x y 3\nQSECTION cost\n x x 1\n"),
         "m:12:1: found a second quadratic section for row \"cost\", expected one"},
    });
}

TEST(MpsReader, takesTheObjectiveAndTheRest) {
    const std::string body =
        "ROWS\n N a\n N b\nCOLUMNS\n M 'MARKER' 'INTORG'\n x a 1 b 2\n M 'MARKER' 'INTEND'\n y b "
        "-1\nBOUNDS\n UP x 3\nENDATA";
    const std::string second =
        "max 0 + 2 x - y | a: -inf <= + x <= inf | 0 <= x <= 3 int | 0 <= y "
        "<= inf";
    expectAll({
        {"the first free row is the objective", body,
         "min 0 + x | b: -inf <= + 2 x - y <= inf | 0 <= x <= 3 int | 0 <= y <= inf"},
        {"sense and name on the next lines", "OBJSENSE\n    max\nOBJNAME\n b\n" + body, second},
        {"sense and name on the same lines, CR LF",
         "\xef\xbb\xbf*c\r\n\r\nOBJSENSE MAXIMIZE\r\nOBJECT b\r\n" + body, second},
        {"an integer column without bounds",
         "ROWS\n N a\nCOLUMNS\n M 'MARKER' 'INTORG'\n x a 1\n y a 1\n M 'MARKER' "
         "'INTEND'\nBOUNDS\n PL b y\nENDATA\n",
         "min 0 + x + y | 0 <= x <= 1 int | 0 <= y <= inf int\nm: integer columns without bounds, "
         "1 from \"x\" on: the file format leaves it open, 0 and 1 are taken; with a bound PL, or "
         "with --intorg-upper=inf for all, 0 and infinity"},
        {"no free row, bytes after the end", "ROWS\n E c\nCOLUMNS\n x c 0\nENDATA\nmore\n",
         "min 0 | c: 0 <= + 0 x <= 0 | 0 <= x <= inf\nm:3:1: no row of type N: the objective is 0"
         "\nm:6:1: what follows ENDATA is not read"},
    });
}

TEST(MpsReader, takesSpecialOrderedSetsOfEveryDialect) {
    const auto with = [](const char* what, const char* lines, const char* sets) {
        return Case{what, around(lines),
                    "min 0 + x + y" + rowsOf + " | 0 <= x <= inf | 0 <= y <= inf" + sets};
    };
    expectAll({
        with("opened by lines, sorted by weight",
             "SOS\n S1 SOS s 1\n x 2\n SOS y 1\n S2 t 5\n t y 2\n", " | s: sos1 y x | t: sos2 y"),
        with("the older header, labels of their own", "SETS\n S2 a s\n a y -1\n s x -2\n",
             " | s: sos2 x y"),
        with("named in front of each member", "SOS1\n s x 1\n s y 2\n t y 1\nSOS2\n y 1\n x 0\n",
             " | s: sos1 x y | t: sos1 y | SOS2: sos2 x y"),
        with("equal weights where no order counts", "SOS\n S2 s\n x 1\n y 1\n S1\tt\n y 1\n",
             " | s: sos2 x y | t: sos1 y"),
    });
}

TEST(MpsReader, namesThePlaceOfEveryFault) {
    const std::string header = "NAME\nROWS\n N cost\n L c1\nCOLUMNS\n x cost 1\n";
    expectAll({
        {"empty", "", "m:1:1: found the end of the file, expected ENDATA"},
        {"cut short", header, "m:7:1: found the end of the file, expected ENDATA"},
        {"an unknown section", "NAMES\n",
         "m:1:1: found \"NAMES\", expected the name of a section (data lines start with a blank)"},
        {"a section too early", "NAME\nCOLUMNS\n", "m:2:1: found COLUMNS, expected ROWS first"},
        {"rows twice", header + "ROWS\n", "m:7:1: found ROWS for the second time"},
        {"words after a header", header + "RHS r c1 1\n",
         "m:7:5: found \"r c1 1\" after RHS, expected the end of the line (data lines start with a "
         "blank)"},
        {"a row's type", "ROWS\n Q c\n",
         "m:2:2: found \"Q\", expected the type of a row: N, E, L or G"},
        {"a row twice", "ROWS\n L c\n G c\n", "m:3:4: found row \"c\" for the second time"},
        {"too many fields", header + " y c1\n",
         "m:7:2: found 2 fields, expected 3 or 5: column and one or two pairs of row and value "
         "(names with blanks need the fixed columns, which line 3 leaves)"},
        {"an unknown row", header + " x c7 1\n", "m:7:4: found \"c7\", expected the name of a row"},
        {"a row twice in a column", header + " x cost 2\n",
         "m:7:4: found row \"cost\" for the second time in column \"x\""},
        {"a column in two places", header + " y c1 1\n x c1 1\n",
         "m:8:2: found column \"x\" again after other columns, expected its entries together (they "
         "start in line 6)"},
        {"no number", header + " y c1 1,5\n", "m:7:7: found \"1,5\", expected a finite number"},
        {"an infinite coefficient", header + " y c1 inf\n",
         "m:7:7: found \"inf\", expected a finite number"},
        {"a number too large", header + " y c1 1e999\n",
         "m:7:7: found \"1e999\", expected a number within double precision"},
        {"an unknown marker", header + " M 'MARKER' 'SOSORG'\n",
         "m:7:13: found \"'SOSORG'\", expected 'INTORG' or 'INTEND'"},
        {"a bound's type", around("BOUNDS\n XX b x 1\n"),
         "m:11:2: found \"XX\", expected the type of a bound: LO, UP, FX, FR, MI, PL, BV, LI, UI, "
         "SC or SI"},
        {"a bound of an unknown column", around("BOUNDS\n UP b z 1\n"),
         "m:11:7: found \"z\", expected the name of a column"},
        {"two right-hand sides", around("RHS\n r c1 1\n r c1 1\n"),
         "m:12:4: found a second right-hand side of row \"c1\", expected one"},
        {"two ranges", around("RANGES\n r c1 1 c1 1\n"),
         "m:11:9: found a second range of row \"c1\", expected one"},
        {"a member outside a set", around("SOS\n x 1\n"),
         "m:11:2: found \"x\", expected S1 or S2 and the name of a set"},
        {"a member of another set", around("SOS\n S1 s\n t x 1\n"),
         "m:12:2: found \"t\" in front of a member, expected the open set, \"s\""},
        {"a member twice", around("SOS1\n s y 1\n s x 1\n s y 2\n"),
         "m:13:4: found \"y\" for the second time in set \"s\", expected each member once"},
        {"an order left open",
         header + " S1 c1 1\n y c1 1\nSOS\n S2 s\n x 1\n S1 3\n y 3\nENDATA\n",
         "m:13:2: found \"y\" with the weight of \"S1\" in set \"s\", expected weights that tell "
         "the order"},
        {"a set in two places", around("SOS1\n s y 1\n t x 1\n s x 2\n"),
         "m:13:2: found set \"s\" again after other sets, expected its members together"},
        {"a quadratic coefficient too large", around("QCMATRIX c1\n x y 1e308\n y x 1e308\n"),
         "m:12:4: found a coefficient of \"x\" and \"y\" beyond double precision, expected a "
         "finite one"},
        {"an objective that is no free row", "OBJNAME\n c\nROWS\n L c\nCOLUMNS\n",
         "m:2:2: found \"c\" as objective, expected the name of a row of type N"},
        {"a null byte", std::string("NAME\n a\0b", 9), "m:2:3: found a null byte, expected text"},
        {"a name too long", "ROWS\n N " + std::string(256, 'n'),
         "m:2:4: found a name of 256 bytes, expected at most 255"},
    });
}

TEST(MpsReader, cutsAtColumnsOnlyWhenAllLinesKeepToThemAndANameHasABlank) {
    const std::string fixed =
        "NAME          cards\n"
        "ROWS\n"
        " N  the cost\n"
        " L  row 1\n"
        "COLUMNS\n"
        "    M1        'MARKER'                 'INTORG'\n"
        "    x 1 2     the cost             3   row 1                1\n"
        "    M2        'MARKER'                 'INTEND'\n"
        "RHS\n"
        "              row 1               12\n"
        "BOUNDS\n"
        " UP           x 1 2               4.\n"
        "ENDATA\n";
    EXPECT_EQ(read(fixed), "min 0 + 3 x 1 2 | row 1: -inf <= + x 1 2 <= 12 | 0 <= x 1 2 <= 4 int");
    EXPECT_EQ(recogniseMpsLayout(fixed).layout, MpsLayout::cards);

    std::string oneLineOff = fixed;
    oneLineOff.replace(oneLineOff.find(" UP           x 1 2"), 8, " UP   x ");
    EXPECT_EQ(recogniseMpsLayout(oneLineOff).firstFreeLine, 12U);
    EXPECT_EQ(read(oneLineOff),
              "m:3:2: found 3 fields, expected 2: type and name of a row (names with blanks need "
              "the fixed columns, which line 12 leaves)");

    std::string withTab = fixed;
    withTab[withTab.find("row 1 ") + 3] = '\t';
    EXPECT_EQ(recogniseMpsLayout(withTab).layout, MpsLayout::free);
}

}  // namespace
}  // namespace norv::test
