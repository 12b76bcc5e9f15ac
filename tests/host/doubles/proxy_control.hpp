#pragma once

#include <cstdint>

/// What a proxy host library offers beside the host's functions, to be looked up by name.
///
/// A proxy forwards each call to the library it stands in front of and counts it. One call can be
/// marked; it is then answered badly instead. Each of the two proxies counts for itself. One
/// thread.

namespace proxy {

/// How the marked call is answered.
enum Answer : std::int32_t {
    worst,  ///< not forwarded: the nastiest value that the contract permits, texts of full length
    failed  ///< not forwarded: whatever the function does stays undone, texts are null
};

extern "C" {

/// Starts counting at 0 and removes the mark.
using ResetFunction = void();
/// Calls since the reset.
using NbCallsFunction = std::int64_t();
/// Marks call number `call`, from 1. Calls whose answer the caller must be able to trust (counts,
/// handles, index settings) are forwarded all the same.
using MarkFunction = void(std::int64_t call, std::int32_t answer);
/// Marks the next call of `name`, which must stay valid.
using MarkNamedFunction = void(const char* name, std::int32_t answer);
/// The operation whose call was answered badly since the reset; null: none.
using SpoiledFunction = const char*();

}  // extern "C"

}  // namespace proxy
