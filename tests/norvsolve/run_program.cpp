#include "norvsolve/run_program.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

#include "norv/file_path.hpp"

namespace norv::test {
namespace {

std::string textOf(const std::string& path) {
    std::ifstream in(filePath(path));  // as text: CR LF becomes one character
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace

void RunningProgram::waitForOutput(const std::string& text) const {
    for (int k = 0; k < 6000; ++k) {
        if (textOf(scratchFile("stdout")).find(text) != std::string::npos) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ADD_FAILURE() << "no \"" << text << "\" in the output";
}

ProgramRun RunningProgram::wait() const {
    const int exitCode = waitForEnd();
    return {exitCode, textOf(scratchFile("stdout")), textOf(scratchFile("stderr"))};
}

ProgramRun runProgram(const std::vector<std::string>& arguments) {
    return RunningProgram(arguments).wait();
}

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
