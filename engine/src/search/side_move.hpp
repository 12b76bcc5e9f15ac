#pragma once

#include <cmath>
#include <cstdint>

#include "model/closed_model.hpp"

namespace engine {

/// What a side move sees of the search beside whose iterations it runs.
class SideMoveSearch {
public:
    /// Goes to `point` if it is the best or scores better than the current one.
    /// @return whether it is.
    virtual bool visit(const Point& point) = 0;
    /// Done so far: the search's clock.
    [[nodiscard]] virtual std::int64_t nbIterations() const = 0;

protected:
    ~SideMoveSearch() = default;
};

/// A way to move many decisions together, beside the iterations of a local search and for a share
/// of their work. It spreads what it does over many calls, so that each takes about as long as an
/// iteration does.
class SideMove {
public:
    /// What it may cost, as multiples of the iterations' own work.
    struct Shares {
        double feasible;    ///< once a feasible point is known
        double infeasible;  ///< until then
    };

    SideMove() = default;
    SideMove(const SideMove&) = delete;
    SideMove& operator=(const SideMove&) = delete;
    virtual ~SideMove() = default;

    [[nodiscard]] virtual Shares shares() const = 0;
    /// It has something to move in this model, which is not too large for it.
    [[nodiscard]] virtual bool isUseful() const = 0;
    /// Values and derivatives computed since construction.
    [[nodiscard]] virtual std::int64_t work() const = 0;
    /// A step, if enough is earned for one.
    /// @param earned  work granted for it.
    void run(double earned) {
        earned_ = std::fmin(earned_ + earned, mostEarned);
        if (earned_ <= 0.0) return;
        const std::int64_t before = work();
        step();
        earned_ -= static_cast<double>(work() - before);
    }

private:
    /// Goes on with what is under way, or starts when its pause is over.
    virtual void step() = 0;

    static constexpr double mostEarned = 10000.0;
    double earned_ = 0.0;
};

}  // namespace engine
