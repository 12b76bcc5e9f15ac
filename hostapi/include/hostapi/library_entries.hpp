#pragma once

#include <cstdint>

/// Types of the entries that every host library offers for each of its interfaces.
///
/// They are resolved before anything else and are mandatory. Per interface they are exported as
/// "nmoXCreate", "CnmoXCreateD", "nmoXFree", "CnmoXCheck", "CnmoXAPIVersion" (likewise "nev…" and,
/// without the creation in a directory, "hux…") and, for the option library, as "XCreate",
/// "XFree", "CXCheck", "CXAPIVersion".

namespace hostapi {

extern "C" {

/// Creates an object and stores its address in `*handle`; leaves it null on failure.
using CreateEntry = std::int32_t(void** handle);

/// The same for a library in `directory`; `message` [length] receives the reason of a failure.
using CreateInDirectoryEntry = std::int32_t(void** handle, const char* directory, char* message,
                                            std::int32_t length);

/// Frees the object at `*handle` and sets the handle to null.
using FreeEntry = void(void** handle);

/// Does the library offer operation `name` with this signature?
/// @param nbArguments  arguments without the object.
/// @param signature    [nbArguments + 1] type codes, the result's first.
/// @param message      room for 256 characters; the reason of a refusal, empty otherwise.
/// @return nonzero for yes.
using CheckEntry = std::int32_t(const char* name, std::int32_t nbArguments,
                                const std::int32_t* signature, char* message);

/// Does the library speak interface version `api`?
/// @param message        room for 256 characters; what the library thinks of the version.
/// @param compatibility  receives 0 (too old), 1 (same) or 3 (newer than the library).
/// @return nonzero for yes.
using VersionEntry = std::int32_t(std::int32_t api, char* message, std::int32_t* compatibility);

}  // extern "C"

}  // namespace hostapi
