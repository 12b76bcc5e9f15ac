#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "solve/settings/command_line.hpp"
#include "solve/settings/help.hpp"

/// One name for each setting, however it is written.
namespace norv::test {
namespace {

const Catalogue& catalogue() {
    static const Catalogue all(DEFINITION_FILE);
    return all;
}

Request request(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> words = {"norvsolve"};
    for (std::string word; in >> word;) words.push_back(word);
    std::vector<const char*> pointers;
    for (const std::string& each : words) pointers.push_back(each.c_str());
    return readCommandLine(static_cast<int>(pointers.size()), pointers.data(), catalogue());
}

/// "FILE name=value ...", or the complaint.
std::string settingsText(const Request& asked, const std::string& variable = {}) {
    if (!asked.fault.empty()) return asked.fault;
    try {
        const Settings settings = settingsOf(asked, variable, catalogue());
        std::string text = settings.model;
        for (const MadeSetting& each : settings.made) text += ' ' + each.name + '=' + each.value;
        return text;
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

TEST(Settings, haveOneNameHoweverTheyAreWritten) {
    const std::string file = testing::TempDir() + "norvsolve_settings.opt";
    std::ofstream(file) << "* c\nseed 3\ntimelim 4\r\nlogfreq = 5\n";
    const struct {
        std::string words, variable, settings;
    } cases[] = {
        {"m.mps --time-limit 5", "", "m.mps time-limit=5"},
        {"--time_limit 5 m.mps", "", "m.mps time-limit=5"},
        {"TimeLimit=5 m.mps", "", "m.mps time-limit=5"},
        {"m.mps timelim = 5 seed 7 -AMPL", "", "m.mps time-limit=5 seed=7"},
        {"m timelim= 5 maxiter =6 writelsp=", "", "m time-limit=5 iteration-limit=6 writelsp="},
        {"-t 5 -i 6 - --seed=8 seed=9", "", "- time-limit=5 iteration-limit=6 seed=9"},
        {"--square m --annealing_level 3 quiet", "", "m square=1 annealinglevel=3 quiet=1"},
        {"-- -m", "strict writelsp 'a ''b' seed=\"1\"", "-m strict=1 writelsp=a 'b seed=1"},
        {"m seed=2 -o " + file, "seed 1",
         "m time-limit=4 seed=2 option-file=" + file + " logfreq=5"},
        {"m timelim=inf wall_limit=inf threads=0", "", "m time-limit=inf wall-limit=inf threads=0"},
        {"--tmlim 5 m.mps", "",
         "command line: unknown setting \"tmlim\": did you mean \"timelim\"?"},
        {"m sed=5", "", "command line: unknown setting \"sed\": did you mean \"seed\"?"},
        {"m qqqqqq", "", "command line: unknown setting \"qqqqqq\""},
        {"m n.mps", "", "command line: found a second file \"n.mps\" after \"m\""},
        {"m timelim", "", "command line: timelim: expected a value"},
        {"m x =5", "", "command line: unknown setting \"x\""},
        {"m -seed=5", "", "command line: found \"-seed=5\", expected --seed or seed=value"},
        {"m timelim=-1", "",
         "command line: time-limit: found \"-1\", expected a number, 0 or more"},
        {"m threads=1.5", "",
         "command line: threads: found \"1.5\", expected an integer, 0 to 1024"},
        {"m sos=1", "", "command line: sos: found \"1\", expected reformulate or refuse"},
        {"m square=x", "", "command line: square: found \"x\", expected 1 or 0"},
        {"m", "threads", "norvsolve_options: threads: expected name=value"},
        {"m", "writelsp \"a", "norvsolve_options: writelsp: found a quote without its end"},
        {"m -o /none", "", "/none: cannot be opened: No such file or directory"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(settingsText(request(each.words), each.variable), each.settings) << each.words;
}

TEST(Settings, answerQuestionsFromTheirTable) {
    const Request asked = request("threads=? timelim=3 time_limit=? -e -ostub");
    EXPECT_TRUE(asked.writesSolution && !asked.echoes && !asked.isClient);
    EXPECT_EQ(asked.solutionStub, "stub");
    std::ostringstream out;
    for (const std::string& each : asked.questions)
        answer(out, catalogue(), each, settingsOf(asked, {}, catalogue()));
    EXPECT_EQ(out.str(),
              "threads = 1\n  Threads of the optimizer; 0: all there are (0 to 1024, default 1)\n"
              "time-limit = 3\n  Seconds of search, rounded up to whole ones (0 or more, default "
              "60)\n");
    std::ostringstream help;
    printHelp(help, catalogue());
    printManual(help, catalogue());
    printCompletion(help, catalogue(), "bash");
    for (const auto& entry : catalogue().entries()) {
        EXPECT_THAT(help.str(), testing::HasSubstr("--" + entry.name() + ' ')) << "completions";
        EXPECT_FALSE(entry.meaning().empty() || entry.group().empty()) << entry.name();
    }
}

}  // namespace
}  // namespace norv::test
