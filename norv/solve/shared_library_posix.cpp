#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>

#include "solve/shared_library.hpp"

namespace norv {
namespace {

std::string loaderReason() {
    const char* reason = dlerror();
    return reason != nullptr ? reason : "the loader gives no reason";
}

/// The run path would do the same, but sanitizers answer dlopen in the program's place, and the
/// run path that counts is then theirs. An installation keeps libraries in a folder of their own.
std::string besideProgram(const std::string& name) {
    if (name.find('/') != std::string::npos) return name;
    const std::string path = programDirectory() + name;
    return std::filesystem::exists(path) ? path : name;
}

}  // namespace

const char* const SharedLibrary::suffix = ".so";

SharedLibrary::SharedLibrary(const std::string& name)
    : library_(dlopen(besideProgram(name).c_str(), RTLD_NOW | RTLD_LOCAL)), name_(name) {
    if (!library_) throw std::runtime_error(loaderReason());
}

void SharedLibrary::Unload::operator()(void* library) const {
    dlclose(library);
}

SharedLibrary::AnyFunction SharedLibrary::find(const char* symbol) const {
    const AnyFunction address = addressOf(symbol);
    if (address == nullptr) throw std::runtime_error(name_ + " has no function " + symbol);
    return address;
}

SharedLibrary::AnyFunction SharedLibrary::addressOf(const char* symbol) const noexcept {
    return reinterpret_cast<AnyFunction>(dlsym(library_.get(), symbol));
}

std::string programDirectory() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().string() + '/';
}

}  // namespace norv
