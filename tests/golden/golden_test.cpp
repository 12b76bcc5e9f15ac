#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "double/whole_call.hpp"

/// Whole calls against what is written down. A file holds cases: a line "== TITLE", lines "> INPUT"
/// as in double/whole_call.hpp, and what comes of it. Input in front of the first case belongs to
/// all of them. With VEXCC_REWRITE_GOLDEN set the files are rewritten with what comes of them now.

namespace {

struct Case {
    std::string head;  ///< title and input, as they stand in the file
    std::vector<std::string> input;
    std::string expected;
};

/// The cases, behind one of what stands in front of them.
std::vector<Case> readCases(const std::string& path) {
    std::vector<Case> cases(1);
    std::ifstream stream(path);
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with("== ")) cases.push_back({"", cases.front().input, ""});
        if (line.starts_with("> ")) cases.back().input.push_back(line.substr(2));
        const bool isHead = cases.size() == 1 || line.starts_with("== ") || line.starts_with("> ");
        (isHead ? cases.back().head : cases.back().expected) += line + "\n";
    }
    return cases;
}

std::string outcomeOf(const Case& c) {
    testing::internal::CaptureStderr();
    std::string text;
    try {
        text = doubles::runCase(c.input);
    } catch (const std::exception& error) {
        text = std::string("cannot run: ") + error.what() + "\n";
    }
    const std::string errors = testing::internal::GetCapturedStderr();
    return errors.empty() ? text : text + "standard error:\n" + errors;
}

class Golden : public testing::TestWithParam<std::string> {};

TEST_P(Golden, CallsAreAsWrittenDown) {
    const std::string path = GOLDEN_FOLDER "/" + GetParam() + ".txt";
    std::vector<Case> cases = readCases(path);
    ASSERT_GT(cases.size(), 1U) << path;
    const bool rewrites = std::getenv("VEXCC_REWRITE_GOLDEN") != nullptr;
    std::string rewritten = cases.front().head;
    cases.erase(cases.begin());
    for (const Case& c : cases) {
        const std::string text = outcomeOf(c);
        EXPECT_TRUE(rewrites || text == c.expected) << c.head << "expected:\n"
                                                    << c.expected << "but:\n"
                                                    << text;
        rewritten += c.head + text;
    }
    if (rewrites) std::ofstream(path, std::ios::binary) << rewritten;
}

INSTANTIATE_TEST_SUITE_P(Files, Golden, testing::Values(GOLDEN_FILES),
                         [](const auto& file) { return file.param; });

}  // namespace
