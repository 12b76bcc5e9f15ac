#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "host/library_loading.hpp"
#include "host/locks.hpp"
#include "host/message_text.hpp"
#include "host/slot.hpp"
#include "hostapi/library_entries.hpp"

namespace vex {

/// One operation of a host interface, as the library is asked for it.
struct Operation {
    const char* name;               ///< known to the library's check entry
    const char* symbol;             ///< exported; with a "C" in front for operations that pass text
    std::int32_t nbArguments;       ///< without the object
    const std::int32_t* signature;  ///< [nbArguments + 1] type codes, the result's first
    void (*bind)(
        AnyFunction) noexcept;  ///< fills the slot; null: with the missing-function handler
};

/// What a binding has to know about an interface.
struct HostInterface {
    const char* fileStem;  ///< of the library file; "64" and the platform's suffix follow
    std::int32_t version;
    /// Names of the mandatory entries, resolved first and in this order.
    struct Entries {
        const char* create;
        const char* createInDirectory;  ///< null: the interface has none
        const char* free;
        const char* check;
        const char* version;
    } entries;
    std::span<const Operation> operations;  ///< in the order in which they are bound
};

/// Outcome of loading a library.
enum class LoadResult : std::int32_t {
    bound = 0,
    refused = 1,       ///< the file cannot be loaded, or the library refuses the version
    symbolMissing = 2  ///< a mandatory entry, or a symbol of an operation that passed its check
};

/// Process-wide binding of one host interface: not loaded, or bound for good.
///
/// With the locks set up, all members but the lock functions themselves may be called from any
/// thread; without, everything runs unlocked. An operation's slot may be called from a thread once
/// `ensureLoaded`, `isLoaded` or `create` told that thread that the library is bound.
class Binding {
public:
    /// Borrows `described`, which must outlive the binding.
    constexpr explicit Binding(const HostInterface& described) : hostInterface_(described) {}
    Binding(const Binding&) = delete;
    Binding& operator=(const Binding&) = delete;

    /// Both idempotent; only while no other thread uses the binding.
    void setUpLocks();
    void tearDownLocks();

    /// Loads the library unless it is loaded. @return whether it is; `message` tells why not.
    [[nodiscard]] bool ensureLoaded(MessageText message,
                                    const LibraryLoading& loading = platformLoading());
    [[nodiscard]] bool isLoaded();

    /// Loads the library if needed and creates an object.
    /// @param handle  points to null; receives the object, which the caller frees with `destroy`.
    /// @return whether there is one; `message` tells why not.
    [[nodiscard]] bool create(void** handle, MessageText message,
                              const LibraryLoading& loading = platformLoading());
    /// Frees an object of `create` and sets the handle to null.
    void destroy(void** handle);
    /// Objects created through this binding and not yet freed.
    [[nodiscard]] std::int32_t nbObjects();

    /// Loads `fileName`, checks version and operations, and fills the slots: all of them after the
    /// last check has passed, or none. Runs under the library lock of its callers.
    [[nodiscard]] LoadResult load(const std::string& fileName, MessageText& message,
                                  const LibraryLoading& loading);

    /// Writes why the library lacks `operation` to the standard output and ends the process.
    [[noreturn]] void reportMissing(const Operation& operation);

private:
    struct Entries {
        hostapi::CreateEntry* create = nullptr;
        hostapi::FreeEntry* free = nullptr;
        hostapi::CheckEntry* check = nullptr;
        hostapi::VersionEntry* version = nullptr;
    };
    struct Locks {
        Lock library;    ///< guards loading and `loaded`
        Lock objects;    ///< guards `objectCount`
        Lock exception;  ///< one report of a missing function at a time
    };
    Lock* lockOf(Lock Locks::*lock) { return locks_ ? &((*locks_).*lock) : nullptr; }
    void countObject(std::int32_t change);

    const HostInterface& hostInterface_;
    LibraryHandle library_ = nullptr;
    bool loaded_ = false;  ///< never cleared
    Entries entries_;      ///< all set once loaded
    std::int32_t objectCount_ = 0;
    std::optional<Locks> locks_;
};

}  // namespace vex
