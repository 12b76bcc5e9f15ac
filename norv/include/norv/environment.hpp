#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "hostapi/handles.hpp"
#include "norv/export.hpp"

namespace norv {

/// The host's environment: log and status streams, global settings, the interrupt flag.
///
/// One thread at a time, except `requestTermination`, which any thread and any signal handler may
/// call. Models refer to the environment they were finished with; it must outlive them.
class NORV_API Environment {
public:
    /// Receives text as it is written, line ends included.
    using Sink = std::function<void(std::string_view text)>;

    /// No limits, one thread, no system directory, both streams discarded.
    Environment();
    ~Environment();
    Environment(Environment&&) noexcept;
    Environment& operator=(Environment&&) noexcept;

    void setLogSink(Sink sink);
    /// The status stream: what goes to log and status alike, the audit line and, while an echo is
    /// on (`nevStatCon`), all that is written to the log.
    void setStatusSink(Sink sink);

    /// The directory of "optlocalsolver.def"; a separator is appended when it has none.
    /// @throws std::length_error beyond 255 characters, the longest text of the host interface.
    void setSystemDirectory(std::string_view directory);
    /// @param seconds  time limit, 0 or more, infinity allowed ("ResLim").
    /// @throws std::invalid_argument when negative or not a number.
    void setTimeLimit(double seconds);
    /// @param iterations  0 or more; 2000000000 stands for no limit ("IterLim").
    /// @throws std::invalid_argument when negative.
    void setIterationLimit(std::int32_t iterations);
    /// @throws std::invalid_argument below 1.
    void setThreads(std::int32_t threads);

    /// Is called whenever the link asks whether it is to stop: at the events of a search, at least
    /// once a second, on the thread that solves. It may request termination. What it throws ends
    /// nothing: it is reported in the log.
    void setPollHook(std::function<void()> hook);

    /// Asks the running solve to stop. Async-signal-safe.
    void requestTermination() noexcept;
    void clearTermination() noexcept;

    /// Never null; valid as long as this object or the one it was moved to.
    [[nodiscard]] hostapi::EnvironmentHandle handle() const noexcept;

private:
    std::unique_ptr<hostapi::EnvironmentRecord> record_;
};

}  // namespace norv
