#pragma once

#include <cstddef>

namespace vex {

/// A lock of one owner at a time: a critical section on Windows, a mutex elsewhere.
class Lock {
public:
    Lock() noexcept;
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void enter();
    void leave();

private:
    // The platform's lock, made in place: making a lock must not fail, so it takes no memory.
    alignas(std::max_align_t) std::byte storage_[64];
};

/// Holds a lock for the scope's time; holds nothing when given null.
class LockGuard {
public:
    explicit LockGuard(Lock* held) : lock_(held) {
        if (lock_ != nullptr) lock_->enter();
    }
    ~LockGuard() {
        if (lock_ != nullptr) lock_->leave();
    }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

private:
    Lock* lock_;
};

}  // namespace vex
