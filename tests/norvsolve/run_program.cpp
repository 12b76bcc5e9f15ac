#include "norvsolve/run_program.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

#include "norv/file_path.hpp"

namespace norv::test {

std::string scratchFile(const std::string& name) {
    return testing::TempDir() + "norvsolve_" + std::to_string(getpid()) + "_" + name;
}

std::string contentOf(const std::string& path) {
    std::ifstream in(filePath(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void writeFile(const std::string& path, const std::string& content) {
    std::ofstream(filePath(path), std::ios::binary) << content;
}

}  // namespace norv::test
