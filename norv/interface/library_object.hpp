#pragma once

#include <cstdint>
#include <exception>
#include <memory>

#include "hostapi/library_entries.hpp"
#include "interface/library_check.hpp"
#include "interface/text_result.hpp"
#include "norv/export.hpp"

/// The mandatory entries of a host library, once per interface.

namespace norv {

/// Creates a record in its empty state. @return nonzero on success; `*handle` is null otherwise.
template <class Record>
std::int32_t createObject(void** handle, char* message, std::int32_t length) noexcept {
    if (message != nullptr && length > 0) *message = '\0';
    if (handle == nullptr) return 0;
    *handle = nullptr;
    try {
        *handle = std::make_unique<Record>().release();
        return 1;
    } catch (const std::exception& failure) {
        if (length > 0) writeText(message, static_cast<std::size_t>(length), failure.what());
        return 0;
    }
}

/// Frees what `createObject` made; a null handle is accepted.
template <class Record>
void freeObject(void** handle) noexcept {
    if (handle == nullptr) return;
    const std::unique_ptr<Record> owned(static_cast<Record*>(*handle));
    *handle = nullptr;
}

}  // namespace norv

/// Exports the four entries that every interface has, under the names given.
/// @param served  the norv::Interface that the questions are about.
#define NORV_LIBRARY_ENTRIES(create, release, check, version, Record, served)                     \
    extern "C" NORV_API hostapi::CreateEntry create;                                              \
    extern "C" NORV_API hostapi::FreeEntry release;                                               \
    extern "C" NORV_API hostapi::CheckEntry check;                                                \
    extern "C" NORV_API hostapi::VersionEntry version;                                            \
    std::int32_t create(void** handle) {                                                          \
        return norv::createObject<Record>(handle, nullptr, 0);                                    \
    }                                                                                             \
    void release(void** handle) {                                                                 \
        norv::freeObject<Record>(handle);                                                         \
    }                                                                                             \
    std::int32_t check(const char* name, std::int32_t nbArguments, const std::int32_t* signature, \
                       char* message) {                                                           \
        return norv::checkOperation(served, name, nbArguments, signature, message);               \
    }                                                                                             \
    std::int32_t version(std::int32_t api, char* message, std::int32_t* compatibility) {          \
        return norv::checkVersion(served, api, message, compatibility);                           \
    }

/// Exports the creation in a directory. The directory tells a loader where the library lies; here
/// the library is loaded already, and its objects need no files.
#define NORV_CREATE_IN_DIRECTORY(create, Record)                                 \
    extern "C" NORV_API hostapi::CreateInDirectoryEntry create;                  \
    std::int32_t create(void** handle, const char* /*directory*/, char* message, \
                        std::int32_t length) {                                   \
        return norv::createObject<Record>(handle, message, length);              \
    }
