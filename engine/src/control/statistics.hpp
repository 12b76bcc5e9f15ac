#pragma once

#include <chrono>
#include <cstdint>

namespace engine {

/// Totals of the last solve. Written by the solve thread while the workers rest.
struct Statistics {
    std::int64_t iterations = 0;  ///< whole ones of all work, see workPerIteration
    std::int64_t moves = 0;       ///< of all searchers
    std::int64_t accepted = 0;
    std::int64_t improving = 0;
    std::int64_t nodes = 0;  ///< of trees
    /// Since the solve began; stands still while a callback runs, so that a text fetched in two
    /// calls is the same both times.
    std::chrono::steady_clock::duration elapsed{};

    /// Whole seconds, rounded down.
    [[nodiscard]] std::int64_t seconds() const {
        return std::chrono::duration_cast<std::chrono::seconds>(elapsed).count();
    }
};

}  // namespace engine
