// A small but real option library, which offers no operation: each one asked for is denied.

#include <cstdint>

#include "host/exported.hpp"

static std::int32_t nbObjects = 0;  // created and not yet freed

extern "C" {

VEX_EXPORTED std::int32_t XCreate(void** handle) {
    ++nbObjects;
    *handle = &nbObjects;
    return 1;
}

VEX_EXPORTED void XFree(void** handle) {
    --nbObjects;
    *handle = nullptr;
}

VEX_EXPORTED std::int32_t CXCheck(const char*, std::int32_t, const std::int32_t*, char*) {
    return 0;
}

VEX_EXPORTED std::int32_t CXAPIVersion(std::int32_t, char*, std::int32_t*) {
    return 1;
}

VEX_EXPORTED std::int32_t smallHostObjects() {
    return nbObjects;
}

}  // extern "C"
