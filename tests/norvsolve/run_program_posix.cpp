#include <sys/wait.h>

#include <cstdlib>

#include "norvsolve/run_program.hpp"

namespace norv::test {

void setVariable(const char* name, const std::string& value) {
    setenv(name, value.c_str(), 1);
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
