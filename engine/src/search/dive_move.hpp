#pragma once

#include "search/descent_move.hpp"
#include "search/dive.hpp"

namespace engine {

/// Dives, one after the other. Where one of them leads, a descent starts.
class DiveMove final : public SideMove {
public:
    /// All outlive this. @param domain  [nbDecisions], none empty.
    DiveMove(SideMoveSearch& search, const Evaluator& evaluator,
             const std::vector<Interval>& domain, const ObjectiveCut& cut, Random& random,
             DescentMove& descent)
        : search_(search), descent_(descent), dive_(evaluator, domain, cut, random) {}

    [[nodiscard]] Shares shares() const override { return {0.5, 4.0}; }
    [[nodiscard]] bool isUseful() const override { return dive_.isUseful(); }
    [[nodiscard]] std::int64_t work() const override { return dive_.work(); }

private:
    void step() override;

    SideMoveSearch& search_;
    DescentMove& descent_;
    Dive dive_;
    std::int64_t next_ = 200;  ///< in iterations
};

}  // namespace engine
