#pragma once

#include "norv/environment.hpp"

namespace norv {

/// While it lives, SIGINT and SIGTERM ask the running solve to stop; a second signal of either
/// kind does what it would do without this object, so that it ends the process at once and the
/// process's status tells which signal did. A signal that was ignored before stays ignored.
///
/// One at a time. The handlers of before are back when it is gone.
class TerminationSignals {
public:
    /// @param environment  outlives this object.
    explicit TerminationSignals(Environment& environment);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

private:
    using Handler = void (*)(int);
    Handler interruptBefore_;
    Handler terminateBefore_;
};

}  // namespace norv
