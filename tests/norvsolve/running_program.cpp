#include "norvsolve/running_program.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

namespace norv::test {

RunningProgram::RunningProgram(std::vector<std::string> arguments) {
    std::vector<char*> words;
    for (std::string& each : arguments) words.push_back(each.data());
    words.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&files, 1, scratchFile("stdout").c_str(), flags, 0600);
    posix_spawn_file_actions_addopen(&files, 2, scratchFile("stderr").c_str(), flags, 0600);
    // Shells start their background programs with SIGINT ignored.
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGINT);
    sigaddset(&defaults, SIGTERM);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    if (posix_spawn(&process, words[0], &files, &attributes, words.data(), environ) != 0)
        ADD_FAILURE() << arguments[0] << " does not start";
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
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
