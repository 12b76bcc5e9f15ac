#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "double/whole_call.hpp"

/// Whole calls against what is written down. Each file of the folder holds cases: a line "==
/// TITLE", lines "> …" that say what is done (double/whole_call.hpp), and the calls that come of
/// it.
///
/// With VEXCC_REWRITE_GOLDEN set the files are rewritten with what comes of it now.

namespace {

struct GoldenCase {
    std::string title;
    std::vector<std::string> input;
    std::string expected;
};

struct GoldenFile {
    std::string head;
    std::vector<GoldenCase> cases;
};

GoldenFile readFile(const std::filesystem::path& path) {
    GoldenFile file;
    std::ifstream stream(path);
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with("== "))
            file.cases.push_back({line.substr(3), {}, ""});
        else if (file.cases.empty())
            file.head += line + "\n";
        else if (line.starts_with("> "))
            file.cases.back().input.push_back(line.substr(2));
        else if (!line.empty())
            file.cases.back().expected += line + "\n";
    }
    return file;
}

std::string runOrFailure(const GoldenCase& c) {
    try {
        testing::internal::CaptureStderr();
        std::string text = doubles::runCase(c.input);
        const std::string errors = testing::internal::GetCapturedStderr();
        return errors.empty() ? text : text + "standard error:\n" + errors;
    } catch (const std::exception& error) {
        return std::string("cannot run: ") + error.what() + "\n";
    }
}

class Golden : public testing::TestWithParam<std::string> {};

TEST_P(Golden, CallsAreAsWrittenDown) {
    const std::filesystem::path path = std::filesystem::path(GOLDEN_FOLDER) / (GetParam() + ".txt");
    GoldenFile file = readFile(path);
    ASSERT_FALSE(file.cases.empty()) << path;
    const bool rewrites = std::getenv("VEXCC_REWRITE_GOLDEN") != nullptr;
    std::string rewritten = file.head;
    for (const GoldenCase& c : file.cases) {
        const std::string text = runOrFailure(c);
        EXPECT_TRUE(rewrites || text == c.expected) << c.title << "\nexpected:\n"
                                                    << c.expected << "but:\n"
                                                    << text;
        rewritten += "== " + c.title + "\n";
        for (const std::string& line : c.input) rewritten += "> " + line + "\n";
        rewritten += text + "\n";
    }
    if (rewrites) std::ofstream(path, std::ios::binary) << rewritten;
}

INSTANTIATE_TEST_SUITE_P(Files, Golden, testing::Values(GOLDEN_FILES),
                         [](const auto& file) { return file.param; });

}  // namespace
