#include "norvsolve/running_program.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

namespace norv::test {

RunningProgram::RunningProgram(std::vector<std::string> arguments) {
    std::vector<char*> words;
    for (std::string& each : arguments) words.push_back(each.data());
    words.push_back(nullptr);
    // The names carry this process's number.
    const std::string output = scratchFile("stdout");
    const std::string errors = scratchFile("stderr");
    writeFile(output, "");  // or `waitForOutput` could see that of an earlier program
    process = fork();
    if (process != 0) return;
    // Shells start their background programs with SIGINT ignored.
    for (const int each : {SIGINT, SIGTERM}) std::signal(each, SIG_DFL);
    const bool isReady = std::freopen(output.c_str(), "w", stdout) != nullptr &&
                         std::freopen(errors.c_str(), "w", stderr) != nullptr;
    if (isReady) execv(words[0], words.data());
    _exit(127);
}

void RunningProgram::waitForOutput(const std::string& text) const {
    for (int k = 0; k < 6000; ++k) {
        if (contentOf(scratchFile("stdout")).find(text) != std::string::npos) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ADD_FAILURE() << "no \"" << text << "\" in the output";
}

void RunningProgram::send(int signal) const {
    kill(process, signal);
}

ProgramRun RunningProgram::wait() const {
    int status = 0;
    waitpid(process, &status, 0);
    return {WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status),
            contentOf(scratchFile("stdout")), contentOf(scratchFile("stderr"))};
}

}  // namespace norv::test
