#include <windows.h>

#include <new>

#include "host/locks.hpp"

namespace vex {

namespace {

CRITICAL_SECTION* sectionIn(std::byte* storage) {
    return std::launder(reinterpret_cast<CRITICAL_SECTION*>(storage));
}

}  // namespace

Lock::Lock() noexcept {
    static_assert(sizeof(CRITICAL_SECTION) <= sizeof storage_);
    InitializeCriticalSection(::new (storage_) CRITICAL_SECTION);
}

Lock::~Lock() {
    DeleteCriticalSection(sectionIn(storage_));
}

void Lock::enter() {
    EnterCriticalSection(sectionIn(storage_));
}

void Lock::leave() {
    LeaveCriticalSection(sectionIn(storage_));
}

}  // namespace vex
