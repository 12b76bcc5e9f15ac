#pragma once

#include <string>
#include <vector>

#include "norvsolve/run_program.hpp"

namespace norv::test {

/// A program that runs beside the test, with the default action for SIGINT and SIGTERM.
class RunningProgram {
public:
    explicit RunningProgram(std::vector<std::string> arguments);
    /// Returns once the output contains `text`; fails the test after a minute.
    void waitForOutput(const std::string& text) const;
    void send(int signal) const;
    /// The exit code is minus the signal's number when one ended the program.
    [[nodiscard]] ProgramRun wait() const;

private:
    int process = -1;
};

}  // namespace norv::test
