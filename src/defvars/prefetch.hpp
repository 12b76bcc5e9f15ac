#pragma once

namespace vex {

/// Asks for the cache line at `address`, which need not be valid. Nothing but speed depends on it:
/// compilers that offer no way to ask do nothing.
inline void prefetchAddress([[maybe_unused]] const void* address) {
#ifdef __has_builtin
#if __has_builtin(__builtin_prefetch)
    __builtin_prefetch(address);
#endif
#endif
}

}  // namespace vex
