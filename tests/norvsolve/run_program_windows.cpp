#include <windows.h>

#include "norv/file_path.hpp"
#include "norvsolve/run_program.hpp"

namespace norv::test {
namespace {

HANDLE createFile(const std::string& path) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

void setVariable(const char* name, const std::string& value) {
    SetEnvironmentVariableW(filePath(name).c_str(), filePath(value).c_str());
}

RunningProgram::RunningProgram(std::vector<std::string> arguments) {
    std::string command;
    for (const std::string& argument : arguments) command += '"' + argument + "\" ";
    std::wstring wideCommand = filePath(command).native();
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = createFile(scratchFile("stdout"));
    start.hStdError = createFile(scratchFile("stderr"));
    PROCESS_INFORMATION process{};
    if (CreateProcessW(nullptr, wideCommand.data(), nullptr, nullptr, /*inherit handles*/ TRUE, 0,
                       nullptr, nullptr, &start, &process) != 0) {
        CloseHandle(process.hThread);
        process_ = process.hProcess;
    }
    CloseHandle(start.hStdOutput);
    CloseHandle(start.hStdError);
}

void RunningProgram::send(int) const {}

int RunningProgram::waitForEnd() const {
    DWORD exitCode = static_cast<DWORD>(-1);
    WaitForSingleObject(process_, INFINITE);
    GetExitCodeProcess(process_, &exitCode);
    CloseHandle(process_);
    return static_cast<int>(exitCode);
}

}  // namespace norv::test
