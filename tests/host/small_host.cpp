// A small but real option library, which offers no operation: each one asked for is denied.
// SMALL_HOST_REFUSES refuses every version, SMALL_HOST_BOASTS denies nothing, and renaming a symbol
// (-DCXCheck=gone) takes it away.

#include <cstdint>
#include <cstring>

#include "host/exported.hpp"

#define SMALL_HOST_EXPORTED extern "C" VEX_EXPORTED

namespace {

std::int32_t nbObjects = 0;  // created and not yet freed
char anObject = 0;

}  // namespace

SMALL_HOST_EXPORTED std::int32_t XCreate(void** handle) {
    ++nbObjects;
    *handle = &anObject;
    return 1;
}

SMALL_HOST_EXPORTED void XFree(void** handle) {
    --nbObjects;
    *handle = nullptr;
}

SMALL_HOST_EXPORTED std::int32_t CXCheck(const char*, std::int32_t, const std::int32_t*, char*) {
#if defined(SMALL_HOST_BOASTS)
    return 1;
#else
    return 0;
#endif
}

SMALL_HOST_EXPORTED std::int32_t CXAPIVersion(std::int32_t, [[maybe_unused]] char* message,
                                              std::int32_t*) {
#if defined(SMALL_HOST_REFUSES)
    std::strcpy(message, "This library speaks another version.");
    return 0;
#else
    return 1;
#endif
}

SMALL_HOST_EXPORTED std::int32_t smallHostObjects() {
    return nbObjects;
}
