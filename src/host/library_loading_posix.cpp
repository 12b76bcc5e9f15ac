#include <dlfcn.h>

#include "host/library_loading.hpp"

namespace vex {

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

const LibraryLoading& platformLoading() {
    static const LibraryLoading loading{openLibrary, findSymbol};
    return loading;
}

}  // namespace vex
