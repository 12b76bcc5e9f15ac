#include "control/stop_signal.hpp"

#include <utility>

namespace engine {

void StopSignal::reset() {
    const std::lock_guard lock(mutex_);
    text_.reset();
    stopped_ = false;
    halt_ = false;
}

void StopSignal::stop() {
    // In this order: letWork() clears the second and then looks at the first, so that a stop from
    // another thread is never lost.
    stopped_ = true;
    halt_ = true;
}

void StopSignal::interrupt(std::string text) {
    {
        const std::lock_guard lock(mutex_);
        if (!text_) text_ = std::move(text);
    }
    stop();
}

std::optional<std::string> StopSignal::interruptText() const {
    const std::lock_guard lock(mutex_);
    return text_;
}

void StopSignal::letWork() {
    halt_ = false;
    if (stopped_) halt_ = true;
}

}  // namespace engine
