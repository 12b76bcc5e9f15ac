#pragma once

#include <string>
#include <vector>

namespace norv::test {

struct ProgramRun {
    int exitCode = -1;
    std::string output;
    std::string errors;
};

/// Runs a program to its end; the first argument is its path. Line ends arrive as '\n'.
ProgramRun runProgram(const std::vector<std::string>& arguments);

/// Sets a variable of the environment, which programs run later inherit.
void setVariable(const char* name, const std::string& value);

/// A file of this test's own, removed by nobody, overwritten by the next run.
std::string scratchFile(const std::string& name);

std::string contentOf(const std::string& path);  ///< to the byte
void writeFile(const std::string& path, const std::string& content);

}  // namespace norv::test
