// A small but real option library, which offers no operation: each one asked for is denied.

#include <cstdint>

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
    return 0;
}

SMALL_HOST_EXPORTED std::int32_t CXAPIVersion(std::int32_t, char*, std::int32_t*) {
    return 1;
}

SMALL_HOST_EXPORTED std::int32_t smallHostObjects() {
    return nbObjects;
}
