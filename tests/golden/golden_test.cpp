#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "double/whole_call.hpp"
#include "golden/golden_file.hpp"

/// Whole calls against what is written down. With VEXCC_REWRITE_GOLDEN set the files are rewritten
/// with what comes of them now.

namespace {

std::string runOrFailure(const GoldenCase& c) {
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
    const std::filesystem::path path = std::filesystem::path(GOLDEN_FOLDER) / (GetParam() + ".txt");
    const GoldenFile file = readGoldenFile(path);
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
