#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// One thing that is done, and what comes of it.
struct GoldenCase {
    std::string title;
    std::vector<std::string> input;  ///< lines as in double/whole_call.hpp
    std::string expected;
};

/// Cases in a file: a line "== TITLE", lines "> INPUT", and the calls that come of it. Empty lines
/// do not count.
struct GoldenFile {
    std::string head;  ///< lines before the first case
    std::vector<GoldenCase> cases;
};

GoldenFile readGoldenFile(const std::filesystem::path& path);
