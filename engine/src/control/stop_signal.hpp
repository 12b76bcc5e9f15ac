#pragma once

#include <atomic>
#include <mutex>
#include <optional>
#include <string>

namespace engine {

/// How a running solve is told to end, from any thread.
class StopSignal {
public:
    /// Forgets earlier requests; when a solve begins.
    void reset();

    /// Idempotent.
    void stop();
    /// Stops and keeps `text` as the solve's error; the first text stays.
    void interrupt(std::string text);

    [[nodiscard]] bool isStopped() const { return stopped_; }
    [[nodiscard]] std::optional<std::string> interruptText() const;

    /// Halts the workers alone, for a limit; undone by letWork().
    void halt() { halt_ = true; }
    /// Lets the workers run again unless the solve was stopped.
    void letWork();
    /// What the workers watch.
    [[nodiscard]] const std::atomic<bool>& workersHalt() const { return halt_; }

private:
    std::atomic<bool> stopped_{false};
    std::atomic<bool> halt_{false};
    mutable std::mutex mutex_;  ///< guards text_
    std::optional<std::string> text_;
};

}  // namespace engine
