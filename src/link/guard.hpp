#pragma once

#include <exception>

namespace vex {

/// Runs `body`; no exception leaves. What it threw is handed to `onError` as a text that lives
/// until `onError` returns, and `onError` gives the result in place of `body`. It must not throw.
template <class Body, class OnError>
auto guarded(Body body, OnError onError) noexcept -> decltype(body()) {
    try {
        return body();
    } catch (const std::exception& e) {
        return onError(e.what());
    } catch (...) {
        return onError("Unknown error");
    }
}

}  // namespace vex
