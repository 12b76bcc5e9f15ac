#pragma once

#include <atomic>
#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "evaluate/evaluator.hpp"
#include "operators/random.hpp"
#include "search/best_point.hpp"
#include "search/inverse.hpp"
#include "search/objective_cut.hpp"
#include "search/searcher.hpp"
#include "search/side_move.hpp"

namespace engine {

/// Local search on weighted violation.
///
/// One iteration takes a violated constraint, or the wish for a better objective when all hold,
/// draws decisions and values that would satisfy it (InverseWalk), tries each on the incremental
/// evaluator and takes the one with the best score, the sum of weighted violations: best from
/// multiple selections (Cai, "Balance between complexity and quality", IJCAI 2015) over jump moves
/// (Luteberget and Sartor, "Feasibility Jump", Math. Prog. Comp. 15, 2023), here for any
/// expression.
/// When none improves the score, an ejection chain (Glover, "Ejection chains, reference structures
/// and alternating path methods", 1996) repairs what the move has broken by further moves, which
/// is what carries the search along equations; a chain that overshoots is shortened to the first
/// inequality in its way. If that fails, too, the weights of what is violated grow (Morris, "The
/// breakout method", AAAI 1993), and after a long time without progress the search restarts from
/// the best point, shaken, with another strategy (Selman, Kautz and Cohen, "Noise strategies for
/// improving local search", AAAI 1994, for one of its ingredients). Beside the iterations the side
/// moves of a list move many decisions together, each for its share of the work.
class LocalSearch : private SideMoveSearch {
public:
    LocalSearch(const ClosedModel& model, std::vector<Interval> domain, SearchSettings settings);
    LocalSearch(const LocalSearch&) = delete;
    LocalSearch& operator=(const LocalSearch&) = delete;

    void startFrom(const Point& point);
    void run(std::int64_t nbIterations, const std::atomic<bool>& stop);
    void spend(std::int64_t work, const std::atomic<bool>& stop);
    void tighten(const std::vector<Interval>& domain);
    void adopt(const Incumbent& incumbent);
    [[nodiscard]] const Incumbent& best() const { return best_.incumbent(); }
    [[nodiscard]] const SearchStatistics& statistics() const { return statistics_; }

private:
    /// What an iteration wants to achieve.
    struct Wish {
        ExpressionIndex expression;
        Goal goal;
    };
    struct Candidate {
        DecisionMove move;
        double score;
    };

    /// What differs between two restarts: no one way is good on every model.
    struct Strategy {
        double weightGrowth;  ///< factor by which weights grow at local minima, beside adding 1
        double noiseShare;    ///< of iterations that draw few candidates
        double lossShare;     ///< of local minima at which the best candidate is taken at a loss
    };

    /// An iteration and what runs beside it. @return the work, in operand visits.
    std::int64_t step();
    /// After some steps: what they claim is judged.
    void confirm();
    // The iteration's steps (local_search.cpp).
    void iterate();
    [[nodiscard]] double score() const { return evaluator_.ledger().weighted() + cut_.weighted(); }
    std::optional<Wish> makeWish();
    void apply(const DecisionMove& move);
    void accept();
    /// Claims the point as the best if it is. @return whether it is.
    bool claim();
    bool visit(const Point& point) override;
    [[nodiscard]] std::int64_t nbIterations() const override { return statistics_.iterations; }
    [[nodiscard]] std::int64_t workBeside() const;
    [[nodiscard]] bool accepts(double before, double after);
    /// Puts the evaluator to `point`, moved into the domain.
    void moveTo(const Point& point);
    void findMovable();

    /// An iteration stops drawing after this many values computed, so that its time is bounded by
    /// the columns' lengths and not by their product with the number of draws.
    static constexpr std::size_t workLimit = 20000;

    // Candidates (candidates.cpp).
    std::optional<Candidate> drawCandidates(const Wish& wish);
    void tryCandidate(const DecisionMove& move, std::optional<Candidate>& best);
    void tryNeighbours(DecisionIndex d, std::optional<Candidate>& best);
    void adaptStep(DecisionIndex d, bool success);
    [[nodiscard]] DecisionIndex anyDecision();
    [[nodiscard]] bool isTabu(const DecisionMove& move) const;

    // Chains (chain.cpp).
    bool tryChain(const DecisionMove& first, double before);
    void extendChain(const DecisionMove& move);
    std::optional<Candidate> drawRepair(std::size_t entry);
    std::optional<std::size_t> anyNewlyViolated(const Evaluator::Mark& since);
    [[nodiscard]] bool isInChain(DecisionIndex d) const;
    /// Largest part of the chain's way that no satisfied inequality forbids, in (0, 1).
    [[nodiscard]] double openPartOfWay(const Evaluator::Mark& since) const;
    bool shortenChain(const Evaluator::Mark& start, double sufficient);

    // Escapes (escape.cpp).
    void raiseWeights();
    /// Divides all weights when one has grown too large.
    void rescaleWeights();
    void chooseStrategy();
    void restart();
    void resetWeights();
    void shake();
    [[nodiscard]] DecisionMove randomMove(DecisionIndex d);

    const ClosedModel& model_;
    std::vector<Interval> domain_;
    SearchSettings settings_;
    Random random_;
    Evaluator evaluator_;
    InverseWalk walk_;
    ObjectiveCut cut_;
    BestPoint best_;
    std::vector<std::unique_ptr<SideMove>> sideMoves_;
    SearchStatistics statistics_;
    Strategy strategy_{1.0, 0.1, 0.0};

    std::vector<DecisionIndex> movable_;   ///< decisions with more than one value
    std::vector<std::int64_t> tabuUntil_;  ///< [nbDecisions] iteration
    std::vector<double> stepSize_;         ///< [nbDecisions] of steps to neighbours
    std::vector<DecisionIndex> moved_;     ///< since the last commit
    std::vector<DecisionMove> chain_;      ///< scratch: the chain's moves so far
    std::vector<Value> chainStart_;        ///< scratch: the decisions' values before it
    std::size_t work_ = 0;                 ///< values computed in this iteration
    std::int64_t workLeft_ = 0;            ///< of what was granted; negative: owed
    std::int64_t sinceProgress_ = 0;
    std::int64_t sinceFeasible_ = 0;
    double typicalLoss_ = 0.0;  ///< running mean of the score lost at local minima
};

}  // namespace engine
