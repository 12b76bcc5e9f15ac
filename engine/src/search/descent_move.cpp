#include "search/descent_move.hpp"

#include <algorithm>

namespace engine {

void DescentMove::start() {
    descent_.start(evaluator_, cut_.activeObjective());
    start_ = search_.nbIterations();
}

void DescentMove::step() {
    constexpr std::int64_t shortestPause = 500;
    const std::int64_t now = search_.nbIterations();
    if (!descent_.isRunning()) {
        if (now < next_) return;
        start();
    } else if (descent_.advance()) {
        search_.visit(descent_.point());
    }
    if (!descent_.isRunning()) next_ = now + std::max(shortestPause, now - start_);
}

}  // namespace engine
