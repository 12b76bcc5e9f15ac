#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "norvsolve/run_program.hpp"

namespace norv::test {

void setVariable(const char* name, const std::string& value) {
    setenv(name, value.c_str(), 1);
}

RunningProgram::RunningProgram(std::vector<std::string> arguments) {
    std::vector<char*> words;
    for (std::string& each : arguments) words.push_back(each.data());
    words.push_back(nullptr);
    // The names carry this process's number.
    const std::string output = scratchFile("stdout");
    const std::string errors = scratchFile("stderr");
    writeFile(output, "");  // or `waitForOutput` could see that of an earlier program
    const pid_t process = fork();
    process_ = reinterpret_cast<void*>(static_cast<std::intptr_t>(process));
    if (process != 0) return;
    // Shells start their background programs with SIGINT ignored.
    for (const int each : {SIGINT, SIGTERM}) std::signal(each, SIG_DFL);
    const bool isReady = std::freopen(output.c_str(), "w", stdout) != nullptr &&
                         std::freopen(errors.c_str(), "w", stderr) != nullptr;
    if (isReady) execv(words[0], words.data());
    _exit(127);
}

void RunningProgram::send(int signal) const {
    kill(static_cast<pid_t>(reinterpret_cast<std::intptr_t>(process_)), signal);
}

int RunningProgram::waitForEnd() const {
    int status = 0;
    waitpid(static_cast<pid_t>(reinterpret_cast<std::intptr_t>(process_)), &status, 0);
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace norv::test
