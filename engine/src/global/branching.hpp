#pragma once

#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "back_ends/simplex.hpp"
#include "global/node_queue.hpp"
#include "global/relaxation.hpp"

namespace engine {

/// A column to split a box at.
struct BranchPoint {
    std::int32_t column;
    double point;  ///< the lower part ends here
    double next;   ///< the upper part starts here; the same but for integers
    double lowerDistance;
    double upperDistance;
};

/// Chooses where to split, and learns from what splits brought: pseudocosts (Benichou et al.,
/// "Experiments in mixed-integer linear programming", Math. Prog. 1, 1971), for integers by their
/// fractions, for reals by how far the relaxation misses the definitions that they enter (Belotti
/// et al., "Branching and bounds tightening techniques for non-convex MINLP", Optim. Methods
/// Softw. 24, 2009, section 5). Integers of which little is known are tried (Achterberg, Koch and
/// Martin, "Branching rules revisited", Oper. Res. Letters 33, 2005, section 2.7).
class Branching {
public:
    /// It outlives this.
    explicit Branching(const Relaxation& relaxation);

    /// What the bounds of both parts of a split would gain; none: there is no time for that.
    using Trial = std::function<std::optional<SimplexSolver::Trial>(const BranchPoint&)>;

    /// @param levels   [nbColumns] of the relaxation's optimum.
    /// @param weights  [nbDefinitions] how much the bound depends on a definition.
    /// @return nothing when no column is left that could be split.
    std::optional<BranchPoint> choose(std::span<const double> levels,
                                      std::span<const double> weights, const Trial& trial);
    /// Where the relaxation tells nothing: the column that is widest for its size.
    [[nodiscard]] std::optional<BranchPoint> chooseWidest() const;
    /// The bound of a box of `split` has risen by `gain`.
    void learn(const Split& split, double gain);

private:
    struct Gain {
        double sum = 0.0;
        double nb = 0.0;
    };
    struct Candidate {
        std::int32_t column;
        double lowerDistance;
        double upperDistance;
        double score = 0.0;
    };

    [[nodiscard]] bool isInteger(std::int32_t column) const;
    [[nodiscard]] bool canSplit(std::int32_t column) const;
    void addFractional(std::span<const double> levels, std::vector<Candidate>& candidates) const;
    void addMissing(std::span<const double> levels, std::span<const double> weights,
                    std::vector<Candidate>& candidates);
    void blame(std::int32_t column, double miss);
    [[nodiscard]] double estimate(std::int32_t column, bool isUpper, double distance) const;
    [[nodiscard]] double scoreOf(const Candidate& candidate) const;
    [[nodiscard]] bool isReliable(std::int32_t column) const;
    void tryOut(std::span<const double> levels, const Trial& trial,
                std::vector<Candidate>& candidates);
    [[nodiscard]] BranchPoint splitAt(const Candidate& candidate, double level) const;

    const Relaxation& relaxation_;
    std::vector<Gain> lower_;  ///< [nbColumns]
    std::vector<Gain> upper_;  ///< [nbColumns]
    Gain all_;
    std::vector<double> blame_;  ///< [nbColumns] zero outside `blamed_`
    std::vector<std::int32_t> blamed_;
};

}  // namespace engine
