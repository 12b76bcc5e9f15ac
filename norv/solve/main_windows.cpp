#include <windows.h>

#include <string>
#include <vector>

#include "norv/file_path.hpp"
#include "solve/program.hpp"

namespace {

/// The console shows what the program writes as UTF-8, and afterwards what others write as before.
class Utf8Console {
public:
    Utf8Console() { SetConsoleOutputCP(CP_UTF8); }
    ~Utf8Console() { SetConsoleOutputCP(before_); }
    Utf8Console(const Utf8Console&) = delete;
    Utf8Console& operator=(const Utf8Console&) = delete;

private:
    UINT before_ = GetConsoleOutputCP();
};

}  // namespace

int wmain(int argc, wchar_t** argv) {
    const Utf8Console console;
    std::vector<std::string> arguments;
    for (int k = 0; k < argc; ++k) arguments.push_back(norv::fileName(argv[k]));
    std::vector<const char*> pointers;
    for (const std::string& each : arguments) pointers.push_back(each.c_str());
    pointers.push_back(nullptr);
    return norv::runProgram(argc, pointers.data());
}
