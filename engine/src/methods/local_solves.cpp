#include "methods/local_solves.hpp"

#include <algorithm>
#include <cmath>
#include <optional>
#include <random>
#include <utility>

#include "back_ends/solve_locally.hpp"
#include "methods/enumeration.hpp"
#include "model/domain.hpp"
#include "model/refusal.hpp"
#include "nonlinear/nonlinear_program.hpp"

namespace engine {
namespace {

using Status = NonlinearAnswer::Status;

/// Larger models are left to other methods: their derivatives alone would take seconds.
constexpr std::size_t largestModel = 2'000'000;

/// A continuous decision whose propagated range is as narrow as tolerances are is fixed where the
/// range holds a bound of its domain: such ranges have no interior to solve in.
constexpr double narrow = 1e-5;

/// Propagation below one fixed decision may look at so many operands.
constexpr std::int64_t propagationWork = 200'000;

/// Tries in a row without a better point, after which there is little to be expected.
constexpr int mostFruitless = 300;

/// Whether some operator is surely not linear in its operands; constants as operands are seen, not
/// what else is constant.
bool looksNonlinear(const ClosedModel& model) {
    const auto isVariable = [&model](ExpressionIndex e) {
        return model.operatorOf(e) != LS_OP_CONST;
    };
    for (ExpressionIndex e = 0; e < model.nbExpressions(); ++e) {
        const auto x = model.operandsOf(e);
        switch (smoothTable[static_cast<std::size_t>(model.operatorOf(e))].shape) {
            case SmoothShape::Product:
                if (std::count_if(x.begin(), x.end(), isVariable) > 1) return true;
                break;
            case SmoothShape::Function:
            case SmoothShape::Pair:
            case SmoothShape::Fold:
            case SmoothShape::Choice:
            case SmoothShape::ScalarProduct:
                return true;
            default:
                break;
        }
    }
    return false;
}

double centre(const Interval& i) {
    return std::clamp(0.0, i.lower, i.upper);
}

/// All local solves of one run.
class LocalSolves {
public:
    LocalSolves(const Ground& ground, FeasibleIncumbent& incumbent, std::string_view finder,
                Pace& pace);

    /// From the start, and for mixed models first dives.
    void begin();
    /// From more and more starts, until the pace ends or nothing more is to be expected.
    void goOn();

private:
    struct Box {
        std::vector<double> lower;
        std::vector<double> upper;
    };
    enum class Order { Nearest, Upward, Random };

    [[nodiscard]] bool mustEnd() { return pace_.mustEnd(); }
    [[nodiscard]] Box box() const;
    NonlinearAnswer solve(const std::vector<double>& start, const Box& box, int objective,
                          bool isVariant);
    bool offer(const std::vector<double>& levels);
    bool solveAndOffer(const std::vector<double>& start, const Box& box);
    bool dive(std::vector<double> levels, double portion, Order order);
    bool fixSome(const std::vector<double>& levels, double portion, Order order);
    bool fix(DecisionIndex d, double level);
    void relaxAndDive(const std::vector<double>& start, double portion, Order order);
    void searchNeighbourhood();
    void solveIncumbentAgain();
    std::vector<double> scatteredStart();
    [[nodiscard]] std::vector<double> levelsOf(const Point& point) const;
    double uniform() { return std::generate_canonical<double, 53>(random_); }

    const ClosedModel& model_;
    Propagator propagator_;
    const Point& start_;
    FeasibleIncumbent& incumbent_;
    std::string_view finder_;
    Pace& pace_;
    std::mt19937_64 random_;
    NonlinearProgram program_;
    std::vector<DecisionIndex> discrete_;  ///< that are not fixed by propagation
    std::vector<double> relaxed_;          ///< levels of the relaxation, or empty
    Point solvedAgain_;                    ///< the incumbent that was solved again last
    std::int64_t nbTries_ = 0;
};

LocalSolves::LocalSolves(const Ground& ground, FeasibleIncumbent& incumbent,
                         std::string_view finder, Pace& pace)
    : model_(ground.model),
      propagator_(ground.propagator),
      start_(ground.start),
      incumbent_(incumbent),
      finder_(finder),
      pace_(pace),
      random_(static_cast<std::uint64_t>(ground.seed)),
      program_(ground.model) {
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) {
        const Interval i = propagator_.domainOf(d);
        if (model_.isDiscrete(d) && i.lower < i.upper) discrete_.push_back(d);
    }
}

LocalSolves::Box LocalSolves::box() const {
    Box box;
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) {
        const Interval propagated = propagator_.domainOf(d);
        Interval i = model_.isDiscrete(d) ? propagated : model_.domain[static_cast<std::size_t>(d)];
        if (!model_.isDiscrete(d) && propagated.upper - propagated.lower <= narrow) {
            const Interval own = i;
            for (const double bound : {own.lower, own.upper, 0.0}) {
                if (propagated.lower <= bound && bound <= propagated.upper) i = {bound, bound};
            }
        }
        box.lower.push_back(i.lower);
        box.upper.push_back(i.upper);
    }
    return box;
}

NonlinearAnswer LocalSolves::solve(const std::vector<double>& start, const Box& box, int objective,
                                   bool isVariant) {
    const NonlinearProblem problem{program_, box.lower, box.upper, start, objective};
    return solveLocally(problem, {.pace = pace_, .isBarrierAdaptive = isVariant});
}

bool LocalSolves::offer(const std::vector<double>& levels) {
    if (levels.empty()) return false;
    Point point = start_;
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) {
        const auto j = static_cast<std::size_t>(d);
        const double level = model_.isDiscrete(d) ? std::round(levels[j]) : levels[j];
        point[j] = valueFor(model_, d, level);
    }
    return incumbent_.offer(point, finder_);
}

/// Solves for the objective, and where that ends nowhere, for any point first.
/// @return whether the incumbent has become better.
bool LocalSolves::solveAndOffer(const std::vector<double>& start, const Box& box) {
    const NonlinearAnswer answer = solve(start, box, /*objective=*/0, /*isVariant=*/false);
    if (offer(answer.levels)) return true;
    const bool isDone = answer.status == Status::Optimal && incumbent_.hasPoint();
    if (isDone || mustEnd()) return false;
    if (answer.status == Status::Infeasible && incumbent_.hasPoint()) return false;
    const NonlinearAnswer any = solve(start, box, /*objective=*/-1, /*isVariant=*/true);
    const bool isBetter = offer(any.levels);
    if (any.levels.empty() || any.status == Status::Infeasible || mustEnd()) return isBetter;
    return offer(solve(any.levels, box, /*objective=*/0, /*isVariant=*/true).levels) || isBetter;
}

std::vector<double> LocalSolves::levelsOf(const Point& point) const {
    std::vector<double> levels;
    levels.reserve(point.size());
    for (const Value v : point) levels.push_back(v.asDouble());
    return levels;
}

bool LocalSolves::fix(DecisionIndex d, double level) {
    const Interval i = propagator_.domainOf(d);
    const double rounded = std::clamp(std::round(level), i.lower, i.upper);
    const std::size_t mark = propagator_.mark();
    const std::int64_t before = propagator_.work();
    bool holds = propagator_.restrictDecision(d, {rounded, rounded}, propagationWork);
    if (!holds) {
        // The value is refuted: the nearest ones on either side are left.
        propagator_.undoTo(mark);
        const bool goesUp = rounded < i.upper && (level >= rounded || rounded == i.lower);
        const Interval rest =
            goesUp ? Interval{rounded + 1.0, i.upper} : Interval{i.lower, rounded - 1.0};
        holds = !rest.isEmpty() && propagator_.restrictDecision(d, rest, propagationWork);
    }
    pace_.spend(100 + propagator_.work() - before);
    return holds;
}

/// Fixes a portion of the integers that are still open, and what propagation makes of it.
/// @return false: propagation found that there is no point.
bool LocalSolves::fixSome(const std::vector<double>& levels, double portion, Order order) {
    struct Candidate {
        double rank;
        DecisionIndex decision;
        double level;
    };
    std::vector<Candidate> open;
    for (const DecisionIndex d : discrete_) {
        const Interval i = propagator_.domainOf(d);
        if (i.lower == i.upper) continue;
        const double level = std::clamp(levels[static_cast<std::size_t>(d)], i.lower, i.upper);
        const double fraction = level - std::floor(level);
        double rank = std::min(fraction, 1.0 - fraction);
        double wanted = level;
        if (order == Order::Upward && i.upper == i.lower + 1.0) {
            rank = i.upper - level;
            wanted = level > i.lower + 0.01 ? i.upper : i.lower;
        } else if (order == Order::Random) {
            wanted = std::floor(level) + (uniform() < fraction ? 1.0 : 0.0);
            rank = std::fabs(wanted - level) + 0.2 * uniform();
        }
        open.push_back({rank, d, wanted});
    }
    std::stable_sort(open.begin(), open.end(),
                     [](const Candidate& a, const Candidate& b) { return a.rank < b.rank; });
    const auto nbWanted =
        static_cast<std::size_t>(std::ceil(portion * static_cast<double>(open.size())));
    for (std::size_t k = 0; k < std::min(nbWanted, open.size()); ++k) {
        const Interval i = propagator_.domainOf(open[k].decision);
        if (i.lower < i.upper && !fix(open[k].decision, open[k].level)) return false;
        if (k % 16 == 15 && mustEnd()) return false;
    }
    return true;
}

/// @return whether the incumbent has become better.
bool LocalSolves::dive(std::vector<double> levels, double portion, Order order) {
    const std::size_t mark = propagator_.mark();
    const auto isOpen = [this](DecisionIndex d) {
        const Interval i = propagator_.domainOf(d);
        return i.lower < i.upper;
    };
    bool isBetter = false;
    while (!mustEnd()) {
        if (!fixSome(levels, portion, order)) break;
        if (std::none_of(discrete_.begin(), discrete_.end(), isOpen)) {
            isBetter = solveAndOffer(levels, box());
            break;
        }
        if (portion >= 1.0) continue;
        NonlinearAnswer answer = solve(levels, box(), /*objective=*/0, /*isVariant=*/false);
        if (!answer.levels.empty()) levels = std::move(answer.levels);
    }
    propagator_.undoTo(mark);
    return isBetter;
}

void LocalSolves::relaxAndDive(const std::vector<double>& start, double portion, Order order) {
    NonlinearAnswer answer = solve(start, box(), /*objective=*/0, /*isVariant=*/false);
    if (answer.levels.empty() || mustEnd()) return;
    relaxed_ = answer.levels;
    dive(std::move(answer.levels), portion, order);
}

void LocalSolves::begin() {
    if (mustEnd()) return;
    const std::vector<double> start = levelsOf(start_);
    if (discrete_.empty()) {
        solveAndOffer(start, box());
        return;
    }
    relaxAndDive(start, /*portion=*/1.0, Order::Nearest);
    const std::vector<double> levels = relaxed_.empty() ? start : relaxed_;
    if (!mustEnd()) dive(levels, /*portion=*/0.25, Order::Upward);
    if (!mustEnd()) dive(levels, /*portion=*/0.25, Order::Nearest);
}

/// A start somewhere: near the incumbent or the start, or anywhere in the propagated box.
std::vector<double> LocalSolves::scatteredStart() {
    std::vector<double> x = levelsOf(incumbent_.hasPoint() ? incumbent_.point() : start_);
    const bool isNear = nbTries_ % 2 == 0;
    // Wide and narrow by turns: 1, 10, 100 units.
    const double reach = std::pow(10.0, static_cast<double>(nbTries_ / 2 % 3));
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) {
        const Interval i = propagator_.domainOf(d);
        double& level = x[static_cast<std::size_t>(d)];
        const double middle = isNear ? level : centre(i);
        const double width = isNear ? 0.3 * std::max(1.0, std::fabs(level)) * reach : 10.0 * reach;
        const double lower = std::max(i.lower, middle - width);
        const double upper = std::min(i.upper, middle + width);
        level = lower + uniform() * (upper - lower);
    }
    return x;
}

/// Most integers as in the incumbent, the others open; starts from the relaxation's levels.
void LocalSolves::searchNeighbourhood() {
    const std::vector<double> levels = levelsOf(incumbent_.point());
    const std::size_t mark = propagator_.mark();
    const double openShare = 0.1 + 0.4 * uniform();
    bool holds = true;
    for (const DecisionIndex d : discrete_) {
        const Interval i = propagator_.domainOf(d);
        const auto j = static_cast<std::size_t>(d);
        const bool agrees = !relaxed_.empty() && std::fabs(relaxed_[j] - levels[j]) < 0.1;
        if (i.lower == i.upper || uniform() < (agrees ? 0.5 * openShare : openShare)) continue;
        holds = fix(d, levels[j]);
        if (!holds || mustEnd()) break;
    }
    if (holds && !mustEnd()) {
        NonlinearAnswer answer = solve(levels, box(), /*objective=*/0, /*isVariant=*/false);
        if (!answer.levels.empty() && !mustEnd()) {
            dive(std::move(answer.levels), 0.5, nbTries_ % 4 < 2 ? Order::Nearest : Order::Upward);
        }
    }
    propagator_.undoTo(mark);
}

/// The incumbent's integers, the rest solved: it may be a point of somebody else.
void LocalSolves::solveIncumbentAgain() {
    if (!incumbent_.hasPoint()) return;
    const std::vector<double> levels = levelsOf(incumbent_.point());
    if (levels == levelsOf(solvedAgain_)) return;
    solvedAgain_ = incumbent_.point();
    Box fixed = box();
    for (const DecisionIndex d : discrete_) {
        const auto j = static_cast<std::size_t>(d);
        fixed.lower[j] = fixed.upper[j] = levels[j];
    }
    if (solveAndOffer(levels, fixed)) solvedAgain_ = incumbent_.point();
}

void LocalSolves::goOn() {
    int nbFruitless = 0;
    Verdict before;
    for (; !mustEnd() && nbFruitless < mostFruitless; ++nbTries_) {
        solveIncumbentAgain();
        if (mustEnd()) return;
        if (discrete_.empty()) {
            solveAndOffer(scatteredStart(), box());
        } else if (incumbent_.hasPoint() && nbTries_ % 3 != 2) {
            searchNeighbourhood();
        } else {
            relaxAndDive(scatteredStart(), nbTries_ % 2 == 0 ? 1.0 : 0.2, Order::Random);
        }
        // A model that is refused at once costs nothing.
        if (!pace_.spend(workPerIteration)) return;
        const bool hasGained = incumbent_.hasPoint() &&
                               (!before.feasible || isBetter(model_, incumbent_.verdict(), before));
        nbFruitless = hasGained ? 0 : nbFruitless + 1;
        if (hasGained) before = incumbent_.verdict();
    }
}

/// Ends a first attempt early, so that others get their turn.
class ShortPace final : public Pace {
public:
    ShortPace(Pace& pace, std::int64_t budget) : pace_(pace), left_(budget) {}
    bool spend(std::int64_t work) override {
        left_ -= work;
        return pace_.spend(work) && left_ > 0;
    }
    [[nodiscard]] bool mustEnd() override { return left_ <= 0 || pace_.mustEnd(); }

private:
    Pace& pace_;
    std::int64_t left_;
};

class LocalSolvesMethod : public Method {
public:
    using Method::Method;
    [[nodiscard]] std::string reasonAgainst() override {
        if (!looksNonlinear(model())) return "nothing in the model is nonlinear and smooth";
        if (model().operand.size() > largestModel) return "the model is too large for curvature";
        return {};
    }
};

/// At once and alone, for about a second: what it finds serves all others.
class FirstLocalSolves final : public LocalSolvesMethod {
public:
    using LocalSolvesMethod::LocalSolvesMethod;
    [[nodiscard]] std::string_view name() const override { return "first local solves"; }
    [[nodiscard]] double weight() const override { return infinity; }
    void run(Pace& pace) override {
        if (pace.mustEnd()) return;
        constexpr std::int64_t budget = 100'000'000;
        ShortPace shortly(pace, budget);
        LocalSolves(ground(), findings().incumbent, name(), shortly).begin();
    }
};

class FurtherLocalSolves final : public LocalSolvesMethod {
public:
    using LocalSolvesMethod::LocalSolvesMethod;
    [[nodiscard]] std::string_view name() const override { return "local solves"; }
    [[nodiscard]] std::string reasonAgainst() override {
        // The stage that enumerates what is small enough would wait for this one to end.
        const double size = sizeOfSpace(model(), ground().propagator);
        if (size <= largestSpace) return formatText("%.3g points are enumerated instead", size);
        return LocalSolvesMethod::reasonAgainst();
    }
    /// Where all is discrete, moves of the search find more.
    [[nodiscard]] double weight() const override {
        const auto isFree = [this](DecisionIndex d) {
            const Interval i = ground().propagator.domainOf(d);
            return i.lower < i.upper;
        };
        bool hasReals = false;
        bool hasIntegers = false;
        for (DecisionIndex d = 0; d < model().nbDecisions(); ++d) {
            if (isFree(d)) (model().isDiscrete(d) ? hasIntegers : hasReals) = true;
        }
        if (!hasReals) return 1.0;
        return hasIntegers ? 4.0 : 9.0;
    }
    void run(Pace& pace) override {
        if (pace.mustEnd()) return;
        LocalSolves solves(ground(), findings().incumbent, name(), pace);
        if (!findings().incumbent.hasPoint()) solves.begin();
        solves.goOn();
    }
};

}  // namespace

std::unique_ptr<Method> makeFirstLocalSolves(Ground& ground) {
    return std::make_unique<FirstLocalSolves>(ground);
}

std::unique_ptr<Method> makeLocalSolves(Ground& ground) {
    return std::make_unique<FurtherLocalSolves>(ground);
}

}  // namespace engine
