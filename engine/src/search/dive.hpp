#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "operators/random.hpp"
#include "search/objective_cut.hpp"
#include "search/restoration.hpp"

namespace engine {

/// Looks for a feasible point, better than the best so far if there is one, by restorations from
/// scattered points.
///
/// A dive starts at the search's point or at a random one. Often it lets the discrete decisions
/// move as real numbers first, then rounds a part of them, those nearest to whole numbers first and
/// at random in proportion to the distances, restores the rest, and so on until all are whole (the
/// dives of Bonami and Goncalves, "Heuristics for convex mixed integer nonlinear programs", Comput.
/// Optim. Appl. 51, 2012, with restorations in place of optimisations).
///
/// A state machine like ContinuousDescent: `start`, then `advance` while `isRunning`.
class Dive {
public:
    /// All outlive this. @param domain  [nbDecisions], none empty.
    Dive(const Evaluator& evaluator, const std::vector<Interval>& domain, const ObjectiveCut& cut,
         Random& random);

    /// There are float decisions that can move, and the model is not too large.
    [[nodiscard]] bool isUseful() const { return isUseful_; }
    [[nodiscard]] bool isRunning() const { return isRunning_; }
    void start();
    /// One step of a restoration. @return whether the dive has ended at `point`.
    bool advance();
    /// Whole where decisions are discrete, once the dive has ended.
    [[nodiscard]] const Point& point() const { return restoration_.point(); }
    [[nodiscard]] std::int64_t work() const { return restoration_.work(); }

private:
    [[nodiscard]] Point makeStart();
    [[nodiscard]] double scattered(DecisionIndex d, double from);
    [[nodiscard]] std::vector<Restriction> makeRestrictions();
    bool roundNext();
    bool roundOtherwise();
    bool reopen();
    void roundLast();
    [[nodiscard]] Value rounded(DecisionIndex d, double x);

    const Evaluator& evaluator_;
    const ClosedModel& model_;
    const std::vector<Interval>& domain_;
    const ObjectiveCut& cut_;
    Random& random_;
    Restoration restoration_;
    std::vector<DecisionIndex> floats_;      ///< that can move
    std::vector<DecisionIndex> wholes_;      ///< discrete decisions that can move
    Point before_;                           ///< before the last rounding
    std::vector<DecisionIndex> freeBefore_;  ///< then free; the last ones were rounded
    std::size_t nbRounded_ = 0;
    int nbReopenings_ = 0;
    std::optional<Value> refused_;  ///< value that the one rounded decision did not take well
    bool isUseful_;
    bool isRunning_ = false;
};

}  // namespace engine
