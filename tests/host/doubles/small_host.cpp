// A host library in which every operation exists and answers 0. Compile definitions make it faulty:
// SMALL_HOST_LACKS="name" denies that operation, SMALL_HOST_REFUSES refuses every version, and
// renaming a symbol (-DnmoN=gone) takes it away. SMALL_HOST_FUNCTIONS is the file of its functions.

#include <cstdint>
#include <cstring>
#include <tuple>

#include "host/exported.hpp"
#include "hostapi/handles.hpp"

#define SMALL_HOST_EXPORTED extern "C" VEX_EXPORTED

namespace {

std::int32_t nbObjects = 0;  // created and not yet freed
char anObject = 0;

template <std::size_t Size>
void say(const char (&text)[Size], char* message) {
    std::memcpy(message, text, Size);
}

std::int32_t create(void** handle) {
    ++nbObjects;
    *handle = &anObject;
    return 1;
}

void destroy(void** handle) {
    --nbObjects;
    *handle = nullptr;
}

std::int32_t check([[maybe_unused]] const char* name, char* message) {
    message[0] = '\0';
#if defined(SMALL_HOST_LACKS)
    if (std::strcmp(name, SMALL_HOST_LACKS) == 0) {
        say("this host is too old for it.", message);
        return 0;
    }
#endif
    return 1;
}

std::int32_t version(char* message, std::int32_t* compatibility) {
#if defined(SMALL_HOST_REFUSES)
    say("The client speaks another version.", message);
    *compatibility = 0;
    return 0;
#else
    say("Client and library have the same version.", message);
    *compatibility = 1;
    return 1;
#endif
}

template <class Result>
Result nothing() {
    return Result();
}

}  // namespace

#define SMALL_HOST_ENTRIES(createEntry, freeEntry, checkEntry, versionEntry)          \
    SMALL_HOST_EXPORTED std::int32_t createEntry(void** handle) {                     \
        return create(handle);                                                        \
    }                                                                                 \
    SMALL_HOST_EXPORTED void freeEntry(void** handle) {                               \
        destroy(handle);                                                              \
    }                                                                                 \
    SMALL_HOST_EXPORTED std::int32_t checkEntry(const char* name, std::int32_t,       \
                                                const std::int32_t*, char* message) { \
        return check(name, message);                                                  \
    }                                                                                 \
    SMALL_HOST_EXPORTED std::int32_t versionEntry(std::int32_t, char* message,        \
                                                  std::int32_t* compatibility) {      \
        return version(message, compatibility);                                       \
    }
#define SMALL_HOST_DIRECTORY_ENTRY(entry)                                                     \
    SMALL_HOST_EXPORTED std::int32_t entry(void** handle, const char*, char*, std::int32_t) { \
        return create(handle);                                                                \
    }

#if defined(SMALL_HOST_OPTIONS)
SMALL_HOST_ENTRIES(XCreate, XFree, CXCheck, CXAPIVersion)
#else
SMALL_HOST_ENTRIES(nmoXCreate, nmoXFree, CnmoXCheck, CnmoXAPIVersion)
SMALL_HOST_ENTRIES(nevXCreate, nevXFree, CnevXCheck, CnevXAPIVersion)
SMALL_HOST_ENTRIES(huxXCreate, huxXFree, ChuxXCheck, ChuxXAPIVersion)
SMALL_HOST_DIRECTORY_ENTRY(CnmoXCreateD)
SMALL_HOST_DIRECTORY_ENTRY(CnevXCreateD)
#endif

SMALL_HOST_EXPORTED std::int32_t smallHostObjects() {
    return nbObjects;
}

#define HOST_FUNCTION(name, symbol, result, parameters, names) \
    SMALL_HOST_EXPORTED result symbol parameters {             \
        static_cast<void>(std::tie names);                     \
        return nothing<result>();                              \
    }
#include SMALL_HOST_FUNCTIONS
