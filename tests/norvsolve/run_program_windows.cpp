#include <windows.h>

#include <fstream>
#include <iterator>

#include "norv/file_path.hpp"
#include "norvsolve/run_program.hpp"

namespace norv::test {
namespace {

HANDLE createFile(const std::string& path) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

std::string textOf(const std::string& path) {
    std::ifstream in(path);  // as text: CR LF becomes one character
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace

void setVariable(const char* name, const std::string& value) {
    SetEnvironmentVariableW(filePath(name).c_str(), filePath(value).c_str());
}

ProgramRun runProgram(const std::vector<std::string>& arguments) {
    const std::string output = scratchFile("stdout");
    const std::string errors = scratchFile("stderr");
    std::string command;
    for (const std::string& argument : arguments) command += '"' + argument + "\" ";
    std::wstring wideCommand = filePath(command).native();
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = createFile(output);
    start.hStdError = createFile(errors);
    PROCESS_INFORMATION process{};
    DWORD exitCode = static_cast<DWORD>(-1);
    if (CreateProcessW(nullptr, wideCommand.data(), nullptr, nullptr, /*inherit handles*/ TRUE, 0,
                       nullptr, nullptr, &start, &process) != 0) {
        WaitForSingleObject(process.hProcess, INFINITE);
        GetExitCodeProcess(process.hProcess, &exitCode);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    CloseHandle(start.hStdOutput);
    CloseHandle(start.hStdError);
    return {static_cast<int>(exitCode), textOf(output), textOf(errors)};
}

}  // namespace norv::test
