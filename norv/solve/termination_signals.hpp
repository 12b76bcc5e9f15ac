#pragma once

#include "norv/environment.hpp"

namespace norv {

/// While it lives, SIGINT and SIGTERM ask the running solve to stop; a second signal of either
/// kind, or the first one before the search, removes the program's temporary files and ends the
/// process with 128 and the signal's number, 130 for Ctrl+C. A signal that was ignored before stays
/// ignored.
///
/// One at a time. The handlers of before are back when it is gone.
class TerminationSignals {
public:
    /// @param environment  outlives this object.
    explicit TerminationSignals(Environment& environment);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

    /// From now on there is something to stop.
    void beginSearch() noexcept;
    /// Did a signal come?
    [[nodiscard]] static bool haveCome() noexcept;

private:
    using Handler = void (*)(int);
    Handler interruptBefore_;
    Handler terminateBefore_;
};

}  // namespace norv
