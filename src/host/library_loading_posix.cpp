#include <dlfcn.h>
#include <link.h>

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

/// Does `address` belong to `library` itself? dlsym also finds what the libraries export that it
/// depends on, and of the spellings of a name the first one found wins.
bool isPartOf(LibraryHandle library, const void* address) {
    link_map* asked = nullptr;
    link_map* owner = nullptr;
    Dl_info unused;
    return dlinfo(library, RTLD_DI_LINKMAP, &asked) == 0 &&
           dladdr1(address, &unused, reinterpret_cast<void**>(&owner), RTLD_DL_LINKMAP) != 0 &&
           asked == owner;
}

AnyFunction findSymbol(LibraryHandle library, const std::string& symbol) {
    void* address = dlsym(library, symbol.c_str());
    if (address == nullptr || !isPartOf(library, address)) return nullptr;
    return reinterpret_cast<AnyFunction>(address);
}

}  // namespace

const LibraryLoading& platformLoading() {
    static const LibraryLoading loading{openLibrary, findSymbol};
    return loading;
}

}  // namespace vex
