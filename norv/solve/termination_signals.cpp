#include "solve/termination_signals.hpp"

#include <atomic>
#include <csignal>
#include <cstdlib>

#include "solve/temporary_files.hpp"

namespace norv {
namespace {

// A handler has no argument that could carry these.
std::atomic<Environment*> receiver{nullptr};
std::atomic<bool> wasAsked{false};
std::atomic<bool> isSearching{false};
static_assert(std::atomic<Environment*>::is_always_lock_free &&
                  std::atomic<bool>::is_always_lock_free,
              "a signal handler may touch nothing else");

extern "C" void askToStop(int signal) {
    if (wasAsked.exchange(true) || !isSearching.load()) {
        removeTemporaryFiles();
        std::_Exit(128 + signal);
    }
    // Some systems put the default action back before they call a handler.
    std::signal(signal, askToStop);
    if (Environment* environment = receiver.load()) environment->requestTermination();
}

/// @return the handler of before.
auto* install(int signal) {
    auto* const before = std::signal(signal, askToStop);
    if (before == SIG_IGN) std::signal(signal, SIG_IGN);
    return before;
}

void restore(int signal, void (*before)(int)) {
    std::signal(signal, before == SIG_ERR ? SIG_DFL : before);
}

}  // namespace

TerminationSignals::TerminationSignals(Environment& environment) {
    wasAsked = false;
    isSearching = false;
    receiver = &environment;
    interruptBefore_ = install(SIGINT);
    terminateBefore_ = install(SIGTERM);
}

TerminationSignals::~TerminationSignals() {
    restore(SIGTERM, terminateBefore_);
    restore(SIGINT, interruptBefore_);
    receiver = nullptr;
}

void TerminationSignals::beginSearch() noexcept {
    isSearching = true;
}

bool TerminationSignals::haveCome() noexcept {
    return wasAsked;
}

}  // namespace norv
