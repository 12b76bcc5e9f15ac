#include <memory>
#include <mutex>
#include <new>

#include "host/locks.hpp"

namespace vex {

namespace {

std::mutex& mutexIn(std::byte* storage) {
    return *std::launder(reinterpret_cast<std::mutex*>(storage));
}

}  // namespace

Lock::Lock() noexcept {
    static_assert(sizeof(std::mutex) <= sizeof storage);
    ::new (storage) std::mutex;
}

Lock::~Lock() {
    std::destroy_at(&mutexIn(storage));
}

void Lock::enter() {
    mutexIn(storage).lock();
}

void Lock::leave() {
    mutexIn(storage).unlock();
}

}  // namespace vex
