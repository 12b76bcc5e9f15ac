#include "norvsolve/run_program.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace norv::test {

std::string scratchFile(const std::string& name) {
    return testing::TempDir() + "norvsolve_" + std::to_string(getpid()) + "_" + name;
}

std::string contentOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void writeFile(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

ProgramRun runProgram(const std::vector<std::string>& arguments) {
    const std::string output = scratchFile("stdout");
    const std::string errors = scratchFile("stderr");
    std::string command;
    for (const std::string& argument : arguments) command += "'" + argument + "' ";
    command += ">" + output + " 2>" + errors;
    const int status = std::system(command.c_str());  // NOLINT(cert-env33-c): our own programs
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentOf(output), contentOf(errors)};
}

}  // namespace norv::test
