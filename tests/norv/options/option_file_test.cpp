#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "hostapi/codes.hpp"
#include "norv/host_operations.hpp"
#include "norv/options.hpp"

namespace {

using hosttest::opt;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A file that is gone when the test is over; messages name it by this path.
class File {
public:
    explicit File(const std::string& contents) {
        std::ofstream(path, std::ios::binary) << contents;
    }
    ~File() { std::filesystem::remove(path); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    const std::string path = "option_file_test_" + std::to_string(std::random_device{}()) + ".opt";
};

struct Object {
    norv::Options options;
    hostapi::OptionHandle handle = options.handle();

    Object() { EXPECT_EQ(opt().optReadDefinition(handle, NORV_DEFINITION_FILE), 0) << joined(); }

    /// Messages as "type text", without the summary, the file's path as "F".
    std::vector<std::string> messages(const std::string& path = "F") const {
        std::vector<std::string> all;
        for (std::int32_t k = 1; k <= opt().optMessageCount(handle); ++k) {
            char text[256];
            std::int32_t type = -1;
            opt().optGetMessage(handle, k, text, &type);
            if (type == 8) continue;
            std::string line = std::to_string(type) + " " + text;
            const std::size_t place = line.find(path);
            if (place != std::string::npos) line.replace(place, path.size(), "F");
            all.push_back(line);
        }
        return all;
    }
    std::string joined() const {
        std::string all;
        for (const auto& each : messages()) all += each + "\n";
        return all;
    }
    std::string text(const char* name) const {
        char value[256];
        return opt().optGetStrStr(handle, name, value) == value ? value : "(null)";
    }
};

TEST(OptionFile, AcceptsEveryFormOfASetting) {
    const File file(
        "\xEF\xBB\xBF* a comment\r\n"
        "# another\r\n"
        "\r\n"
        "seed 5 # the seed\r\n"
        "  ANNEALINGLEVEL=+3\r\n"
        "dualbound = -1.5e3\r\n"
        "dumpmodel \"my \"\"own\"\" file.txt\"\r\n"
        "writelsp='a;b#c'\r\n"
        "solvetrace=a=b.trc\r\n"
        "defvar x 'row 1'\r\n"
        "defvar = y row2\r\n"
        "logfreq 7");  // no end of line
    Object o;
    opt().optEOLOnlySet(o.handle, 1);
    EXPECT_EQ(opt().optReadParameterFile(o.handle, file.path.c_str()), 0);
    EXPECT_THAT(o.messages(), IsEmpty());
    EXPECT_EQ(opt().optGetIntStr(o.handle, "Seed"), 5);
    EXPECT_EQ(opt().optGetIntStr(o.handle, "annealinglevel"), 3);
    EXPECT_EQ(opt().optGetDblStr(o.handle, "dualbound"), -1500.0);
    EXPECT_EQ(opt().optGetIntStr(o.handle, "logfreq"), 7);
    EXPECT_EQ(o.text("dumpmodel"), "my \"own\" file.txt");
    EXPECT_EQ(o.text("writelsp"), "a;b#c");
    EXPECT_EQ(o.text("solvetrace"), "a=b.trc");
    const auto& pairs = norv::definedVariablePairs(o.handle);
    std::int32_t nbErrors = -1;
    ASSERT_EQ(opt().optVarEquMapCount(o.handle, hostapi::variableEquationMap, &nbErrors), 2);
    EXPECT_EQ(nbErrors, 0);
    EXPECT_EQ(pairs[0].variable + "|" + pairs[0].equation + "|" + pairs[0].place,
              "x|row 1|" + file.path + ":10");
    EXPECT_EQ(pairs[1].variable + "|" + pairs[1].equation, "y|row2");
    EXPECT_EQ(opt().optVarEquMapCount(o.handle, 2, nullptr), 0);
}

TEST(OptionFile, NamesFileLineAndReasonOfEveryRefusal) {
    const std::string long300(300, 'a');
    const struct {
        std::string line, message;
    } cases[] = {
        {"seeed 3", "3 F:2: unknown option \"seeed\", did you mean \"seed\"?"},
        {"dumpmodle f", "3 F:2: unknown option \"dumpmodle\", did you mean \"dumpmodel\"?"},
        {"Agrvars 1", "3 F:2: unknown option \"Agrvars\", did you mean \"aggrvars\"?"},
        {"presolve 1", "3 F:2: unknown option \"presolve\""},
        {"= 5", "3 F:2: unknown option \"\""},
        {"seed", "2 F:2: option seed needs an integer"},
        {"seed # 3", "2 F:2: option seed needs an integer"},
        {"seed 3 4",
         "2 F:2: option seed: \"4\" stands after the value; a value with blanks needs quotes"},
        {"seed 3.5", "4 F:2: option seed takes an integer, not \"3.5\""},
        {"seed ''", "4 F:2: option seed takes an integer, not \"\""},
        {"seed ++3", "4 F:2: option seed takes an integer, not \"++3\""},
        {"seed -1", "5 F:2: option seed: -1 is outside 0 to 2147483647"},
        {"seed 99999999999",
         "5 F:2: option seed: \"99999999999\" is beyond the range of an integer"},
        {"annealinglevel 10", "5 F:2: option annealinglevel: 10 is outside 0 to 9"},
        {"dualbound high", "4 F:2: option dualbound takes a real number, not \"high\""},
        {"dualbound nan", "4 F:2: option dualbound takes a real number, not \"nan\""},
        {"dualbound 1,5", "4 F:2: option dualbound takes a real number, not \"1,5\""},
        {"dualbound 1e999",
         "5 F:2: option dualbound: \"1e999\" is beyond the range of a real number"},
        {"solvetracetime -0.5", "5 F:2: option solvetracetime: -0.5 is outside 0 to inf"},
        {"dumpmodel \"open", "2 F:2: the quote before \"open\" is not closed"},
        {"dumpmodel " + long300, "2 F:2: option dumpmodel takes at most 255 characters, not 300"},
        {"defvar x", "2 F:2: option defvar needs a variable and an equation"},
        {"defvar x e1 e2",
         "2 F:2: option defvar: \"e2\" stands after the value; a value with blanks needs quotes"},
        {std::string("seed \0 3", 8), "2 F:2: the line has a control character, code 0"},
        {long300 + " 1", "3 F:2: unknown option \"" + long300.substr(0, 60) + "...\""},
    };
    for (const auto& c : cases) {
        const File file("* first line\n" + c.line + "\nlogfreq 12\n");
        Object o;
        EXPECT_NE(opt().optReadParameterFile(o.handle, file.path.c_str()), 0);
        EXPECT_THAT(o.messages(file.path), ElementsAre(c.message));
        EXPECT_EQ(opt().optGetIntStr(o.handle, "logfreq"), 12) << "the next line is read";
        EXPECT_EQ(opt().optGetIntStr(o.handle, "seed"), 0) << "the default stays";
        EXPECT_EQ(opt().optGetDefinedStr(o.handle, "seed"), 0);
    }
}

TEST(OptionFile, WarnsOfRepetitionsAndTakesTheLast) {
    const File file("seed 1\ndefvar x e\ndefvar y e\nlogfreq 2\nSEED 3\n");
    Object o;
    EXPECT_EQ(opt().optReadParameterFile(o.handle, file.path.c_str()), 0);
    EXPECT_THAT(o.messages(file.path),
                ElementsAre("7 F:5: option seed replaces the value of line 1"));
    EXPECT_EQ(opt().optGetIntStr(o.handle, "seed"), 3);
}

TEST(OptionFile, EchoesItsLinesInPlaceWhenAsked) {
    const File file("* head\r\nseed x\n\x01\n");
    Object o;
    opt().optEchoSet(o.handle, 1);
    opt().optReadParameterFile(o.handle, file.path.c_str());
    EXPECT_THAT(o.messages(file.path), ElementsAre("9 * head", "9 seed x",
                                                   "4 F:2: option seed takes an integer, not \"x\"",
                                                   "9 ?", "3 F:3: unknown option \"?\""));
    opt().optClearMessages(o.handle);
    EXPECT_EQ(opt().optMessageCount(o.handle), 0);
    opt().optEchoSet(o.handle, 0);
    const File plain("seed 2\n");
    opt().optReadParameterFile(o.handle, plain.path.c_str());
    EXPECT_THAT(o.messages(), IsEmpty());
}

TEST(OptionFile, SplitsLinesAtSemicolonsOutsideTheEndOfLineMode) {
    const File file(
        "seed 4; dumpmodel 'a;b' ;; logfreq 9 # c; d\nwritelsp it''s;annealinglevel=2\n");
    for (const std::int32_t endOfLineOnly : {0, 1}) {
        Object o;
        opt().optEOLOnlySet(o.handle, endOfLineOnly);
        const bool clean = opt().optReadParameterFile(o.handle, file.path.c_str()) == 0;
        EXPECT_EQ(clean, endOfLineOnly == 0) << o.joined();
        EXPECT_EQ(opt().optGetIntStr(o.handle, "seed"), endOfLineOnly == 0 ? 4 : 0);
        EXPECT_EQ(o.text("dumpmodel"), endOfLineOnly == 0 ? "a;b" : "");
        EXPECT_EQ(o.text("writelsp"), endOfLineOnly == 0 ? "it''s" : "it''s;annealinglevel=2");
    }
}

TEST(OptionFile, SurvivesGarbage) {
    std::mt19937 random(7);
    std::vector<std::string> contents = {"",
                                         "\n\n",
                                         "\r",
                                         std::string(100000, 'x'),
                                         "seed " + std::string(100000, '1'),
                                         "dumpmodel \"" + std::string(100000, '"'),
                                         std::string(100000, '\0'),
                                         std::string(50000, ';'),
                                         "\xEF\xBB",
                                         std::string(50000, '\'')};
    for (int k = 0; k < 40; ++k) {
        std::string bytes(300, ' ');
        for (char& c : bytes) c = static_cast<char>(random() % (k % 2 == 0 ? 256 : 64));
        contents.push_back(bytes);
    }
    for (const std::string& each : contents) {
        const File file(each);
        Object o;
        opt().optEchoSet(o.handle, 1);
        opt().optReadParameterFile(o.handle, file.path.c_str());
        for (const std::string& message : o.messages(file.path)) {
            EXPECT_LE(message.size(), 258U);
            EXPECT_EQ(message.find('\n'), std::string::npos);
        }
    }
}

TEST(OptionFile, SaysWhyItCannotBeRead) {
    Object o;
    EXPECT_NE(opt().optReadParameterFile(o.handle, "no/such.opt"), 0);
    EXPECT_THAT(o.messages(),
                ElementsAre("1 no/such.opt: cannot be opened: No such file or directory"));
    opt().optClearMessages(o.handle);
    EXPECT_NE(opt().optReadParameterFile(o.handle, "."), 0);
    EXPECT_EQ(o.messages().size(), 1U);
    char text[256] = "untouched";
    std::int32_t type = -1;
    for (const std::int32_t index : {0, 2, -1}) {
        opt().optGetMessage(o.handle, index, text, &type);
        EXPECT_STREQ(text, "");
    }
}

TEST(OptionObject, KnowsWhatWasSetAndRefusesMistakenTypes) {
    Object o;
    char value[256] = "old";
    EXPECT_EQ(opt().optGetDefinedStr(o.handle, "aggrvars"), 0);
    opt().optSetIntStr(o.handle, "aggrvars", 1);
    EXPECT_NE(opt().optGetDefinedStr(o.handle, "AGGRVARS"), 0);
    EXPECT_TRUE(o.options.set("dualbound=4", "command line"));
    EXPECT_NE(opt().optGetDefinedStr(o.handle, "dualbound"), 0);
    EXPECT_FALSE(o.options.set("dualbund=4", "command line"));
    opt().optSetIntStr(o.handle, "aggrvars", 2);
    EXPECT_EQ(opt().optGetIntStr(o.handle, "aggrvars"), 1);
    EXPECT_EQ(opt().optGetIntStr(o.handle, "dualbound"), 0);
    EXPECT_TRUE(std::isnan(opt().optGetDblStr(o.handle, "nothing")));
    EXPECT_EQ(opt().optGetStrStr(o.handle, "seed", value), nullptr);
    EXPECT_THAT(
        o.messages(),
        ElementsAre("3 command line: unknown option \"dualbund\", did you mean \"dualbound\"?",
                    "5 option aggrvars: 2 is outside 0 to 1",
                    "4 option dualbound is a real number, not an integer",
                    "3 unknown option \"nothing\"", "4 option seed is an integer, not a text"));
}

TEST(OptionObject, KeepsSetValuesWhenDefinitionsAreReadAgain) {
    Object o;
    ASSERT_TRUE(o.options.set("seed 9", "test"));
    ASSERT_TRUE(o.options.set("defvar x e", "test"));
    EXPECT_EQ(opt().optReadDefinition(o.handle, NORV_DEFINITION_FILE), 0);
    EXPECT_EQ(opt().optGetIntStr(o.handle, "seed"), 9);
    EXPECT_NE(opt().optGetDefinedStr(o.handle, "seed"), 0);
    EXPECT_EQ(opt().optGetDefinedStr(o.handle, "logfreq"), 0);
    EXPECT_EQ(norv::definedVariablePairs(o.handle).size(), 1U);
    const File narrower("integer seed 0 0 5 'only up to 5'\n");
    EXPECT_EQ(opt().optReadDefinition(o.handle, narrower.path.c_str()), 0);
    EXPECT_THAT(
        o.messages(),
        ElementsAre(
            "7 option seed: the new definitions do not allow the value, which is dropped",
            "7 option defvar: the new definitions do not allow the value, which is dropped"));
    EXPECT_EQ(opt().optVarEquMapCount(o.handle, hostapi::variableEquationMap, nullptr), 0);
    EXPECT_EQ(opt().optGetIntStr(o.handle, "seed"), 0);
}

TEST(DefinitionFile, IsTakenWholeOrNotAtAll) {
    const struct {
        std::string text, message;
    } cases[] = {
        {"", "6 F: no option is defined"},
        {"group a\ninteger a 1 0 2\n",
         "6 F:2: expected: integer NAME DEFAULT LOWEST HIGHEST DESCRIPTION"},
        {"integer a 3 0 2 d\n", "6 F:1: option a: 3 is outside 0 to 2"},
        {"real a x 0 2 d\n", "6 F:1: option a takes a real number, not \"x\""},
        {"text a '' d\ntext A '' d\n", "6 F:2: option \"A\" is defined twice"},
        {"string a '' d\n", "6 F:1: \"string\" is none of group, integer, real, text, pairs"},
        {"pairs a b d\n", "6 F:1: option a takes an integer as its map type, not \"b\""},
    };
    for (const auto& c : cases) {
        const File file(c.text);
        Object o;
        EXPECT_NE(opt().optReadDefinition(o.handle, file.path.c_str()), 0);
        EXPECT_THAT(o.messages(file.path), ElementsAre(c.message));
        EXPECT_EQ(opt().optGetIntStr(o.handle, "logfreq"), 100000) << "the old ones stay";
    }
}

TEST(DefinitionFile, IsWhatTheOptionsPageDescribes) {
    std::stringstream page;
    page << std::ifstream(NORV_OPTIONS_PAGE).rdbuf();
    std::ifstream definitions(NORV_DEFINITION_FILE);
    std::string line;
    int nbOptions = 0;
    while (std::getline(definitions, line)) {
        std::istringstream words(line);
        std::string kind, name, initial;
        words >> kind >> name >> initial;
        if (kind.empty() || kind == "*" || kind == "group") continue;
        ++nbOptions;
        const std::string shown = kind == "text" ? "empty" : kind == "pairs" ? "none" : initial;
        EXPECT_THAT(page.str(), HasSubstr("| `" + name + "` | " + kind + " | " + shown + " |"));
    }
    EXPECT_EQ(nbOptions, 11);
}

}  // namespace
