#include "host/binding.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace vex {

namespace {

/// Process status after the call of a function that the host's library lacks.
constexpr int missingFunctionExitCode = 123;

/// What the libraries' entries write their reasons to. They are told no length: they expect the
/// buffer of the link's caller, of 256 or 1024 characters, and get more than any of these has.
/// What they wrote is cut to the caller's buffer afterwards.
using LibraryMessage = std::array<char, 4096>;

// By hand: the locale's conversion would look up other names under some locales.
char toLowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
char toUpperAscii(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// Host libraries differ in how their compilers spell exported names.
AnyFunction findInAnyCase(const LibraryLoading& loading, LibraryHandle library,
                          const std::string& name) {
    std::string lower = name;
    std::transform(lower.begin(), lower.end(), lower.begin(), toLowerAscii);
    if (AnyFunction function = loading.find(library, lower)) return function;
    if (AnyFunction function = loading.find(library, name)) return function;
    std::string upper = name;
    std::transform(upper.begin(), upper.end(), upper.begin(), toUpperAscii);
    return loading.find(library, upper);
}

/// Resolves `name` into `entry`; null names are entries that the interface does not have.
template <class Entry>
bool resolve(const char* name, Entry*& entry, LibraryHandle library, const LibraryLoading& loading,
             MessageText& message) {
    if (name == nullptr) return true;
    entry = reinterpret_cast<Entry*>(findInAnyCase(loading, library, name));
    if (entry == nullptr) message << "Could not load symbol '" << name << "': ";
    return entry != nullptr;
}

}  // namespace

void Binding::setUpLocks() {
    if (!locks_) locks_.emplace();
}

void Binding::tearDownLocks() {
    locks_.reset();
}

bool Binding::ensureLoaded(MessageText message, const LibraryLoading& loading) {
    const LockGuard guard(lockOf(&Locks::library));
    message.clear();
    if (!loaded_) {
        const std::string fileName = std::string(hostInterface_.fileStem) + "64" + librarySuffix;
        loaded_ = load(fileName, message, loading) == LoadResult::bound;
    }
    return loaded_;
}

bool Binding::isLoaded() {
    const LockGuard guard(lockOf(&Locks::library));
    return loaded_;
}

bool Binding::create(void** handle, MessageText message, const LibraryLoading& loading) {
    if (!ensureLoaded(message, loading)) return false;
    entries_.create(handle);
    if (*handle == nullptr) {
        message << "Error while creating object";
        return false;
    }
    countObject(+1);
    return true;
}

void Binding::destroy(void** handle) {
    assert(isLoaded());
    entries_.free(handle);
    countObject(-1);
}

std::int32_t Binding::nbObjects() {
    const LockGuard guard(lockOf(&Locks::objects));
    return objectCount_;
}

void Binding::countObject(std::int32_t change) {
    const LockGuard guard(lockOf(&Locks::objects));
    objectCount_ += change;
}

LoadResult Binding::load(const std::string& fileName, MessageText& message,
                         const LibraryLoading& loading) {
    if (loaded_) return LoadResult::bound;
    std::string reason;
    library_ = loading.open(fileName, reason);
    if (library_ == nullptr) {
        message << "Could not load shared library " << fileName << ": " << reason;
        return LoadResult::refused;
    }
    message.clear();

    const auto& names = hostInterface_.entries;
    Entries found;
    hostapi::CreateInDirectoryEntry* createInDirectory = nullptr;  // mandatory, but not used
    if (!resolve(names.create, found.create, library_, loading, message) ||
        !resolve(names.createInDirectory, createInDirectory, library_, loading, message) ||
        !resolve(names.free, found.free, library_, loading, message) ||
        !resolve(names.check, found.check, library_, loading, message) ||
        !resolve(names.version, found.version, library_, loading, message)) {
        return LoadResult::symbolMissing;
    }

    LibraryMessage answer{};
    std::int32_t compatibility = 0;
    if (found.version(hostInterface_.version, answer.data(), &compatibility) == 0) {
        answer.back() = '\0';
        message << answer.data();
        return LoadResult::refused;
    }

    std::vector<AnyFunction> functions;  // one per operation; null: the library lacks it
    functions.reserve(hostInterface_.operations.size());
    for (const Operation& operation : hostInterface_.operations) {
        AnyFunction function = nullptr;
        if (found.check(operation.name, operation.nbArguments, operation.signature,
                        answer.data()) != 0 &&
            !resolve(operation.symbol, function, library_, loading, message)) {
            return LoadResult::symbolMissing;
        }
        functions.push_back(function);
    }

    for (std::size_t k = 0; k < functions.size(); ++k)
        hostInterface_.operations[k].bind(functions[k]);
    entries_ = found;
    return LoadResult::bound;
}

void Binding::reportMissing(const Operation& operation) {
    static std::atomic_flag reported;
    {
        const LockGuard guard(lockOf(&Locks::exception));
        if (!reported.test_and_set()) {
            LibraryMessage reason{};
            if (entries_.check != nullptr) {
                entries_.check(operation.name, operation.nbArguments, operation.signature,
                               reason.data());
                reason.back() = '\0';
            } else {
                std::snprintf(reason.data(), reason.size(), "The library is not loaded.");
            }
            std::printf("%s could not be loaded: %s\n", operation.name, reason.data());
            // All streams: a log that the host has open must not lose its last lines.
            std::fflush(nullptr);
        }
    }
    // Without exit handlers and static destructors: we are deep inside the host's call, other
    // threads may be searching, and a handler that calls into the link again would end up here.
    std::_Exit(missingFunctionExitCode);
}

}  // namespace vex
