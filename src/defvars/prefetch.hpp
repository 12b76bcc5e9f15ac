#pragma once

namespace vex {

/// Asks for the cache line at `address`, which need not be valid. Nothing but speed depends on it.
inline void prefetchAddress(const void* address) {
    __builtin_prefetch(address);
}

}  // namespace vex
