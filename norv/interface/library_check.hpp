#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "hostapi/type_codes.hpp"

/// What a host library answers about itself: its operations and its interface version.

namespace norv {

/// One line of an operation table.
struct Operation {
    std::string_view name;
    std::int32_t nbArguments;   ///< without the object
    const std::int32_t* codes;  ///< [nbArguments + 1], the result's first
};

template <class Function>
constexpr Operation describe(std::string_view name) {
    return {name, hostapi::Signature<Function>::nbArguments,
            hostapi::Signature<Function>::codes.data()};
}

/// One interface of a library, for its messages.
struct Interface {
    std::string_view library;  ///< file name without suffix
    std::string_view prefix;   ///< of the operations
    std::int32_t version;
    std::span<const Operation> operations;
};

/// Answers a hostapi::CheckEntry for `served`.
std::int32_t checkOperation(const Interface& served, const char* name, std::int32_t nbArguments,
                            const std::int32_t* signature, char* message) noexcept;

/// Answers a hostapi::VersionEntry for `served`: operations are only ever added, so a newer client
/// gets what it knows and finds missing what it must, an older one may expect other signatures.
std::int32_t checkVersion(const Interface& served, std::int32_t api, char* message,
                          std::int32_t* compatibility) noexcept;

}  // namespace norv
