#pragma once

#include "search/continuous_descent.hpp"
#include "search/objective_cut.hpp"
#include "search/side_move.hpp"

namespace engine {

/// Continuous descents from where the search stands, one after the other, with pauses as long as
/// they took.
class DescentMove final : public SideMove {
public:
    /// All outlive this. @param domain  [nbDecisions], none empty.
    DescentMove(SideMoveSearch& search, const Evaluator& evaluator,
                const std::vector<Interval>& domain, const ObjectiveCut& cut)
        : search_(search), evaluator_(evaluator), cut_(cut), descent_(evaluator.plan(), domain) {}

    [[nodiscard]] Shares shares() const override { return {2.0, 1.0}; }
    [[nodiscard]] bool isUseful() const override { return descent_.isUseful(); }
    [[nodiscard]] std::int64_t work() const override { return descent_.work(); }
    /// Starts one from here; one under way is dropped.
    void start();

private:
    void step() override;

    SideMoveSearch& search_;
    const Evaluator& evaluator_;
    const ObjectiveCut& cut_;
    ContinuousDescent descent_;
    std::int64_t start_ = 0;  ///< in iterations, like next_
    std::int64_t next_ = 50;
};

}  // namespace engine
