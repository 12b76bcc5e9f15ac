#pragma once

#include <functional>
#include <string>

#include "host/slot.hpp"

namespace vex {

/// A loaded library; null for none. Libraries are never unloaded.
using LibraryHandle = void*;

/// How libraries are loaded and searched; tests put their own in place of the platform's.
struct LibraryLoading {
    /// Loads the library `fileName`; on failure returns null and sets `reason`.
    std::function<LibraryHandle(const std::string& fileName, std::string& reason)> open;
    /// The function that the library itself, not one that it depends on, exports as exactly
    /// `symbol`; or null.
    std::function<AnyFunction(LibraryHandle library, const std::string& symbol)> find;
};

/// The platform's own loading. A name without directory goes through its ordinary search.
[[nodiscard]] const LibraryLoading& platformLoading();

/// File name extension of shared libraries: ".dll" on Windows, ".so" elsewhere.
extern const char* const librarySuffix;

}  // namespace vex
