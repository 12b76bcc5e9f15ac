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
    static_assert(sizeof(std::mutex) <= sizeof storage_);
    ::new (storage_) std::mutex;
}

Lock::~Lock() {
    std::destroy_at(&mutexIn(storage_));
}

void Lock::enter() {
    mutexIn(storage_).lock();
}

void Lock::leave() {
    mutexIn(storage_).unlock();
}

}  // namespace vex
