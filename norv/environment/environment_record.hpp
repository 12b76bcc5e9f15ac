#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <string_view>

#include "hostapi/codes.hpp"
#include "norv/environment.hpp"

namespace hostapi {

/// What an environment handle points to. One thread at a time, apart from `terminationRequested`.
struct EnvironmentRecord {
    norv::Environment::Sink logSink;     ///< may be empty: discarded
    norv::Environment::Sink statusSink;  ///< may be empty: discarded
    std::function<void()> pollHook;      ///< may be empty
    std::string systemDirectory;         ///< empty, or with a separator at the end
    double timeLimit = std::numeric_limits<double>::infinity();  ///< seconds
    std::int32_t iterationLimit = noIterationLimit;
    std::int32_t nbThreads = 1;
    bool echoesLog = false;  ///< all log text goes to the status stream too
    std::atomic<bool> terminationRequested{false};
};

/// Writes "hubdclib64: <operation>: <reason>" to the environment's log or, when there is no
/// environment or its log fails, to the standard error stream.
void reportFailure(const EnvironmentRecord* environment, const char* operation,
                   const char* reason) noexcept;

}  // namespace hostapi

namespace norv {

/// Log only, and the status stream while an echo is on.
void writeLog(const hostapi::EnvironmentRecord& environment, std::string_view text);
/// Status stream only.
void writeStatus(const hostapi::EnvironmentRecord& environment, std::string_view text);
/// Log and status stream; the latter gets the text once, echo or not.
void writeLogAndStatus(const hostapi::EnvironmentRecord& environment, std::string_view text);

}  // namespace norv
