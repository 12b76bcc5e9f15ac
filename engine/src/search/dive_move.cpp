#include "search/dive_move.hpp"

namespace engine {

void DiveMove::step() {
    constexpr std::int64_t shortestPause = 100;
    const std::int64_t now = search_.nbIterations();
    if (!dive_.isRunning()) {
        if (now < next_) return;
        dive_.start();
    } else if (dive_.advance() && search_.visit(dive_.point())) {
        descent_.start();
    }
    if (!dive_.isRunning()) next_ = now + shortestPause;
}

}  // namespace engine
