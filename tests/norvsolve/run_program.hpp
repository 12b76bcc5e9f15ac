#pragma once

#include <string>
#include <vector>

namespace norv::test {

struct ProgramRun {
    int exitCode = -1;
    std::string output;
    std::string errors;
};

/// A program that runs beside the test, with the default action for SIGINT and SIGTERM. One at a
/// time: they write to the same files. Line ends of what it writes arrive as '\n'.
class RunningProgram {
public:
    /// @param arguments  the first one is the program's path.
    explicit RunningProgram(std::vector<std::string> arguments);
    /// Returns once the output contains `text`; fails the test after a minute.
    void waitForOutput(const std::string& text) const;
    void send(int signal) const;  ///< not on Windows
    /// The exit code is minus the signal's number when one ended the program.
    [[nodiscard]] ProgramRun wait() const;

private:
    [[nodiscard]] int waitForEnd() const;

    void* process_ = nullptr;  ///< the system's handle or number
};

/// Runs a program to its end.
ProgramRun runProgram(const std::vector<std::string>& arguments);

/// Sets a variable of the environment, which programs run later inherit.
void setVariable(const char* name, const std::string& value);

/// A file of this test's own, removed by nobody, overwritten by the next run.
std::string scratchFile(const std::string& name);

std::string contentOf(const std::string& path);  ///< to the byte
void writeFile(const std::string& path, const std::string& content);

}  // namespace norv::test
