#include "host/library_loading.hpp"

#if defined(_WIN32)
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace vex {

#if defined(_WIN32)

const char* const librarySuffix = ".dll";

namespace {

LibraryHandle openLibrary(const std::string& fileName, std::string& reason) {
    HMODULE library = LoadLibraryA(fileName.c_str());
    if (library == nullptr) reason = "Windows error";
    return library;
}

AnyFunction findSymbol(LibraryHandle library, const std::string& symbol) {
    return reinterpret_cast<AnyFunction>(
        GetProcAddress(static_cast<HMODULE>(library), symbol.c_str()));
}

}  // namespace

#else

const char* const librarySuffix = ".so";

namespace {

/// Local: the link exports `xcreate` and `xfree` itself, and so do host libraries, in one spelling
/// or another; none of them may stand in for another's.
LibraryHandle openLibrary(const std::string& fileName, std::string& reason) {
    void* library = dlopen(fileName.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* text = dlerror();
        reason = text != nullptr ? text : "unknown error";
    }
    return library;
}

AnyFunction findSymbol(LibraryHandle library, const std::string& symbol) {
    return reinterpret_cast<AnyFunction>(dlsym(library, symbol.c_str()));
}

}  // namespace

#endif

const LibraryLoading& platformLoading() {
    static const LibraryLoading loading{openLibrary, findSymbol};
    return loading;
}

}  // namespace vex
