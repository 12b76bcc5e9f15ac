#include <windows.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "norv/file_path.hpp"
#include "solve/shared_library.hpp"

namespace norv {

namespace {

std::string loaderReason(const std::string& name) {
    const auto code = static_cast<int>(GetLastError());
    return name + ": " + std::system_category().message(code);
}

/// With a path, the library's own folder takes the program's place in the search for what it needs.
HMODULE load(const std::string& name) {
    if (name.find_first_of("/\\") == std::string::npos) return LoadLibraryW(filePath(name).c_str());
    const std::filesystem::path path = std::filesystem::absolute(filePath(name));
    return LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

}  // namespace

const char* const SharedLibrary::suffix = ".dll";

SharedLibrary::SharedLibrary(const std::string& name) : library_(load(name)), name_(name) {
    if (!library_) throw std::runtime_error(loaderReason(name));
}

void SharedLibrary::Unload::operator()(void* library) const {
    FreeLibrary(static_cast<HMODULE>(library));
}

SharedLibrary::AnyFunction SharedLibrary::find(const char* symbol) const {
    const AnyFunction address = addressOf(symbol);
    if (address == nullptr) throw std::runtime_error(name_ + " has no function " + symbol);
    return address;
}

SharedLibrary::AnyFunction SharedLibrary::addressOf(const char* symbol) const noexcept {
    return reinterpret_cast<AnyFunction>(
        GetProcAddress(static_cast<HMODULE>(library_.get()), symbol));
}

std::string programDirectory() {
    std::vector<wchar_t> path(MAX_PATH);
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) break;
        path.resize(2 * path.size());  // cut: a path may be longer
    }
    return fileName(std::filesystem::path(path.data()).parent_path()) + '\\';
}

}  // namespace norv
