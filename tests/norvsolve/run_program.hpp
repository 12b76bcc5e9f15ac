#pragma once

#include <string>
#include <vector>

namespace norv::test {

struct ProgramRun {
    int exitCode = -1;
    std::string output;
    std::string errors;
};

/// Runs a program to its end through the shell. `arguments` are quoted; the first is the program.
ProgramRun runProgram(const std::vector<std::string>& arguments);

/// A file of this test's own, removed by nobody, overwritten by the next run.
std::string scratchFile(const std::string& name);

std::string contentOf(const std::string& path);
void writeFile(const std::string& path, const std::string& content);

}  // namespace norv::test
