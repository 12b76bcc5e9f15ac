// A host library that forwards to the built-in one, counts, and answers one marked call badly.
// PROXY_FUNCTIONS is the file of its functions, PROXY_REAL_LIBRARY the library behind it.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "host/exported.hpp"
#include "host/library_loading.hpp"
#include "hostapi/handles.hpp"
#include "hostapi/library_entries.hpp"
#include "proxy_answers.hpp"
#include "proxy_control.hpp"

#define PROXY_EXPORTED extern "C" VEX_EXPORTED

namespace proxy {
namespace {

struct Control {
    std::int64_t nbCalls = 0;
    std::int64_t markedCall = 0;       // 0: none
    const char* markedName = nullptr;  // null: none
    bool isWorst = false;
    const char* spoiled = nullptr;
} control;

template <class Function>
Function* realFunction(const char* symbol) {
    const vex::LibraryLoading& loading = vex::platformLoading();
    std::string reason;
    static const vex::LibraryHandle library = loading.open(PROXY_REAL_LIBRARY, reason);
    const vex::AnyFunction function = library != nullptr ? loading.find(library, symbol) : nullptr;
    if (function == nullptr) {
        std::fprintf(stderr, "proxy host: no %s: %s\n", symbol, reason.c_str());
        std::abort();
    }
    return reinterpret_cast<Function*>(function);
}

/// Counts a call of `name`; true when it is the marked one.
bool isMarked(const char* name) {
    ++control.nbCalls;
    return control.nbCalls == control.markedCall ||
           (control.markedName != nullptr && std::string_view(control.markedName) == name);
}

void spoil(const char* name) {
    control.spoiled = name;
    control.markedCall = 0;
    control.markedName = nullptr;
}

template <class Result, class... Arguments>
Result forward(const char* name, Result (*real)(Arguments...),
               std::type_identity_t<Arguments>... arguments) {
    if (isMarked(name) && maySpoil<Result, Arguments...>(name)) {
        spoil(name);
        return badAnswer<Result>(name, control.isWorst, arguments...);
    }
    return real(arguments...);
}

std::int32_t create(const char* name, hostapi::CreateEntry* real, void** handle) {
    if (!isMarked(name)) return real(handle);
    spoil(name);
    return 0;
}

}  // namespace
}  // namespace proxy

PROXY_EXPORTED void proxyReset() {
    proxy::control = {};
}
PROXY_EXPORTED std::int64_t proxyNbCalls() {
    return proxy::control.nbCalls;
}
PROXY_EXPORTED void proxyMark(std::int64_t call, std::int32_t answer) {
    proxy::control.markedCall = call;
    proxy::control.isWorst = answer == proxy::worst;
}
PROXY_EXPORTED void proxyMarkNamed(const char* name, std::int32_t answer) {
    proxy::control.markedName = name;
    proxy::control.isWorst = answer == proxy::worst;
}
PROXY_EXPORTED const char* proxySpoiled() {
    return proxy::control.spoiled;
}

// The function behind `symbol`, found once.
#define REAL_FUNCTION(symbol, ...)                         \
    static std::type_identity_t<__VA_ARGS__>* const real = \
        proxy::realFunction<std::type_identity_t<__VA_ARGS__>>(#symbol)

#define PROXY_ENTRIES(createEntry, freeEntry, checkEntry, versionEntry)                    \
    PROXY_EXPORTED std::int32_t createEntry(void** handle) {                               \
        REAL_FUNCTION(createEntry, hostapi::CreateEntry);                                  \
        return proxy::create(#createEntry, real, handle);                                  \
    }                                                                                      \
    PROXY_EXPORTED void freeEntry(void** handle) {                                         \
        REAL_FUNCTION(freeEntry, hostapi::FreeEntry);                                      \
        real(handle);                                                                      \
    }                                                                                      \
    PROXY_EXPORTED std::int32_t checkEntry(const char* name, std::int32_t nbArguments,     \
                                           const std::int32_t* signature, char* message) { \
        REAL_FUNCTION(checkEntry, hostapi::CheckEntry);                                    \
        return real(name, nbArguments, signature, message);                                \
    }                                                                                      \
    PROXY_EXPORTED std::int32_t versionEntry(std::int32_t api, char* message,              \
                                             std::int32_t* compatibility) {                \
        REAL_FUNCTION(versionEntry, hostapi::VersionEntry);                                \
        return real(api, message, compatibility);                                          \
    }
#define PROXY_DIRECTORY_ENTRY(entry)                                                       \
    PROXY_EXPORTED std::int32_t entry(void** handle, const char* directory, char* message, \
                                      std::int32_t length) {                               \
        REAL_FUNCTION(entry, hostapi::CreateInDirectoryEntry);                             \
        return real(handle, directory, message, length);                                   \
    }

#if defined(PROXY_OPTIONS)
PROXY_ENTRIES(XCreate, XFree, CXCheck, CXAPIVersion)
#else
PROXY_ENTRIES(nmoXCreate, nmoXFree, CnmoXCheck, CnmoXAPIVersion)
PROXY_ENTRIES(nevXCreate, nevXFree, CnevXCheck, CnevXAPIVersion)
PROXY_ENTRIES(huxXCreate, huxXFree, ChuxXCheck, ChuxXAPIVersion)
PROXY_DIRECTORY_ENTRY(CnmoXCreateD)
PROXY_DIRECTORY_ENTRY(CnevXCreateD)
#endif

#define PROXY_ARGUMENTS(...) __VA_ARGS__
#define HOST_FUNCTION(name, symbol, result, parameters, names)     \
    PROXY_EXPORTED result symbol parameters {                      \
        REAL_FUNCTION(symbol, result parameters);                  \
        return proxy::forward(#name, real, PROXY_ARGUMENTS names); \
    }
#include PROXY_FUNCTIONS
