#include <windows.h>

#include "host/library_loading.hpp"

namespace vex {

const char* const librarySuffix = ".dll";

namespace {

LibraryHandle openLibrary(const std::string& fileName, std::string& reason) {
    const HMODULE library = LoadLibraryA(fileName.c_str());
    if (library == nullptr) reason = "Windows error";
    return library;
}

AnyFunction findSymbol(LibraryHandle library, const std::string& symbol) {
    // Through a type without arguments: the result's own type promises an integer.
    return reinterpret_cast<AnyFunction>(
        GetProcAddress(static_cast<HMODULE>(library), symbol.c_str()));
}

}  // namespace

const LibraryLoading& platformLoading() {
    static const LibraryLoading loading{openLibrary, findSymbol};
    return loading;
}

}  // namespace vex
