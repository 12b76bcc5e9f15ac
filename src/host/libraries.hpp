#pragma once

#include <cstdint>

#include "host/codes.hpp"

/// Binding of the host's libraries, shared by all link objects of the process.
///
/// Messages go into the caller's buffer `message` [length]: the reason of a failure, cut to the
/// buffer, or the empty text. A null buffer or a length below 1 is left alone. A bound library
/// stays bound for the life of the process; a failed attempt may be repeated.

namespace vex {

/// Creates the locks of the four bindings; without them everything runs unlocked. Idempotent.
/// Not to be called while another thread uses a binding.
void setUpBindingLocks();
/// Destroys them; same conditions.
void tearDownBindingLocks();

/// Makes sure that the library is bound. @return nonzero when it is.
[[nodiscard]] std::int32_t nmoGetReady(char* message, std::int32_t length);
[[nodiscard]] std::int32_t nevGetReady(char* message, std::int32_t length);
[[nodiscard]] std::int32_t optGetReady(char* message, std::int32_t length);

/// Nonzero when the library is bound.
[[nodiscard]] std::int32_t nmoLibraryLoaded();
[[nodiscard]] std::int32_t nevLibraryLoaded();

/// Binds the library if needed and creates an object. @return nonzero on success.
[[nodiscard]] std::int32_t optCreate(OptionHandle* handle, char* message, std::int32_t length);
[[nodiscard]] std::int32_t huxXCreate(AuditHandle* handle, char* message, std::int32_t length);

/// Frees an object made by the create of its interface and sets the handle to null. @return 1.
std::int32_t optFree(OptionHandle* handle);
std::int32_t huxXFree(AuditHandle* handle);

}  // namespace vex
