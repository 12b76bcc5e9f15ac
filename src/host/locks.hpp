#pragma once

#if defined(_WIN32)
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
#else
#include <mutex>
#endif

namespace vex {

/// A lock of one owner at a time. A critical section on Windows, whose run-time library need not
/// offer standard mutexes.
class Lock {
public:
#if defined(_WIN32)
    Lock() {
        InitializeCriticalSection(&section_);
    }
    ~Lock() {
        DeleteCriticalSection(&section_);
    }
    void enter() {
        EnterCriticalSection(&section_);
    }
    void leave() {
        LeaveCriticalSection(&section_);
    }
#else
    Lock() = default;
    ~Lock() = default;
    void enter() {
        mutex_.lock();
    }
    void leave() {
        mutex_.unlock();
    }
#endif
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
#if defined(_WIN32)
    CRITICAL_SECTION section_;
#else
    std::mutex mutex_;
#endif
};

/// Holds a lock for the scope's time; holds nothing when given null.
class LockGuard {
public:
    explicit LockGuard(Lock* lock) : lock_(lock) {
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
