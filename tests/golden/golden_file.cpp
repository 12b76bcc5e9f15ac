#include "golden/golden_file.hpp"

#include <fstream>

GoldenFile readGoldenFile(const std::filesystem::path& path) {
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
