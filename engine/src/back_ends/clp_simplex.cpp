// Linear programs in a row, over Clp.
#include "back_ends/simplex.hpp"

#include <algorithm>
#include <cmath>

#include <ClpSimplex.hpp>
#include <CoinError.hpp>

#include "back_ends/cbc_watch.hpp"
#include "back_ends/integer_cuts.hpp"

namespace engine {
namespace {

/// Bounds beyond this cost digits; they are dropped unless the cost drives its column there.
constexpr double farAwayBound = 1e8;
/// Stands for an infinite bound to which the cost drives a column: the simplex method runs into
/// infinities when a program is unbounded.
constexpr double endOfTheWorld = 1e12;
/// Numbers beyond this are no bounds for the simplex method, which would add them up.
constexpr double largestBound = 1e20;
constexpr double tolerance = 1e-9;
/// The usual one: bounds are proved by the multipliers, whatever they are.
constexpr double dualTolerance = 1e-7;
/// Of scaling, factorising and pricing, once a call.
constexpr std::int64_t workPerEntry = 40;

double clpNumber(double bound) {
    return std::fabs(bound) < largestBound ? bound : std::copysign(COIN_DBL_MAX, bound);
}
/// @param side  -1 for a lower bound, 1 for an upper one.
double clpBound(double bound, double side, bool isGoal) {
    const double outward = side * bound;
    if (isGoal) return std::clamp(bound, -endOfTheWorld, endOfTheWorld);
    if (outward >= farAwayBound) return side * COIN_DBL_MAX;
    return side * std::max(outward, -endOfTheWorld);
}

/// A column for each side of a row, at a cost of 1, in the place of all other costs.
void addViolations(ClpSimplex& solver) {
    std::fill_n(solver.objective(), solver.numberColumns(), 0.0);
    std::vector<CoinBigIndex> start{0};
    std::vector<int> row;
    std::vector<double> side;
    for (int i = 0; i < solver.numberRows(); ++i) {
        for (const double s : {1.0, -1.0}) {
            const double bound = s > 0.0 ? solver.rowLower()[i] : solver.rowUpper()[i];
            if (std::fabs(bound) >= largestBound) continue;
            row.push_back(i);
            side.push_back(s);
            start.push_back(static_cast<CoinBigIndex>(row.size()));
        }
    }
    const std::vector<double> ones(row.size(), 1.0);
    solver.addColumns(static_cast<int>(row.size()), /*columnLower=*/nullptr,
                      /*columnUpper=*/nullptr, ones.data(), start.data(), row.data(), side.data());
}

class ClpSimplexMethod final : public SimplexSolver {
public:
    void load(const LinearModel& model, const std::vector<double>& cost,
              const SimplexBasis& start) override;
    void addRows(const LinearModel& model, std::size_t firstRow) override;
    void setCost(const std::vector<double>& cost) override {
        std::copy(cost.begin(), cost.end(), solver_->objective());
        setBounds();
        repairStatus();
    }
    Status solve(Pace& pace, int mostPivots) override;
    bool minimiseViolation(Pace& pace, int mostPivots) override;
    Trial tryBranches(std::int32_t column, double below, double above, Pace& pace,
                      int mostPivots) override;
    std::vector<LinearForm> integerCuts(const std::vector<std::uint8_t>& isInteger,
                                        std::size_t most, Pace& pace) override;
    [[nodiscard]] const std::vector<double>& levels() const override { return levels_; }
    [[nodiscard]] const std::vector<double>& multipliers() const override { return multipliers_; }
    [[nodiscard]] SimplexBasis basis() const override;

private:
    void setBounds();
    void takeStatus(const SimplexBasis& start);
    void repairStatus();
    Status run(CbcWatch& watch, int mostPivots);
    /// Calls `body`, which gives a Status, between the watch's beginning and its end.
    template <typename Body>
    Status watched(Pace& pace, Body body);
    void takeOptimum(const ClpSimplex& solver);

    std::unique_ptr<ClpSimplex> solver_ = std::make_unique<ClpSimplex>();
    std::vector<double> lower_;  ///< [nbColumns]
    std::vector<double> upper_;  ///< [nbColumns]
    std::vector<double> levels_;
    std::vector<double> multipliers_;
};

void ClpSimplexMethod::load(const LinearModel& model, const std::vector<double>& cost,
                            const SimplexBasis& start) {
    lower_ = model.lower;
    upper_ = model.upper;
    const auto nbRows = static_cast<int>(model.nbRows());
    const auto nbColumns = static_cast<int>(model.nbColumns());
    const CoinPackedMatrix matrix(
        /*colordered=*/false, nbColumns, nbRows, static_cast<CoinBigIndex>(model.column.size()),
        model.coefficient.data(), model.column.data(), model.rowStart.data(), /*len=*/nullptr);
    std::vector<double> rowLower(model.rowLower.size());
    std::vector<double> rowUpper(model.rowUpper.size());
    std::transform(model.rowLower.begin(), model.rowLower.end(), rowLower.begin(), clpNumber);
    std::transform(model.rowUpper.begin(), model.rowUpper.end(), rowUpper.begin(), clpNumber);
    // A new one: what a used one keeps does not fit other rows.
    solver_ = std::make_unique<ClpSimplex>();
    solver_->setLogLevel(0);
    // Their true bounds come after: here they would become levels, even the infinite ones.
    const std::vector<double> none(lower_.size(), 0.0);
    solver_->loadProblem(matrix, none.data(), none.data(), cost.data(), rowLower.data(),
                         rowUpper.data());
    setBounds();
    solver_->setPrimalTolerance(tolerance);
    solver_->setDualTolerance(dualTolerance);
    solver_->createStatus();
    if (!start.isEmpty()) takeStatus(start);
    repairStatus();
}

void ClpSimplexMethod::takeStatus(const SimplexBasis& start) {
    const std::ptrdiff_t nbColumns = solver_->numberColumns();
    const auto nbRows = static_cast<std::size_t>(solver_->numberRows());
    std::copy(start.column.begin(), start.column.end(), solver_->statusArray());
    const auto nbKnown = static_cast<std::ptrdiff_t>(std::min(start.row.size(), nbRows));
    std::copy(start.row.begin(), start.row.begin() + nbKnown, solver_->statusArray() + nbColumns);
}

/// The nearest status that a nonbasic variable with these bounds can have: one at a bound that it
/// does not have would be infinite.
ClpSimplex::Status repaired(ClpSimplex::Status status, double lower, double upper) {
    if (status == ClpSimplex::basic) return status;
    const bool hasLower = lower > -COIN_DBL_MAX;
    const bool hasUpper = upper < COIN_DBL_MAX;
    if (status == ClpSimplex::atUpperBound && hasUpper) return status;
    if (hasLower) return ClpSimplex::atLowerBound;
    return hasUpper ? ClpSimplex::atUpperBound : ClpSimplex::isFree;
}

void ClpSimplexMethod::repairStatus() {
    for (int j = 0; j < solver_->numberColumns(); ++j) {
        solver_->setColumnStatus(j, repaired(solver_->getColumnStatus(j), solver_->columnLower()[j],
                                             solver_->columnUpper()[j]));
    }
    for (int i = 0; i < solver_->numberRows(); ++i) {
        solver_->setRowStatus(
            i, repaired(solver_->getRowStatus(i), solver_->rowLower()[i], solver_->rowUpper()[i]));
    }
}

void ClpSimplexMethod::setBounds() {
    const double* cost = solver_->objective();
    for (std::size_t j = 0; j < lower_.size(); ++j) {
        solver_->columnLower()[j] = clpBound(lower_[j], -1.0, cost[j] > 0.0);
        solver_->columnUpper()[j] = clpBound(upper_[j], 1.0, cost[j] < 0.0);
    }
}

void ClpSimplexMethod::addRows(const LinearModel& model, std::size_t firstRow) {
    const std::size_t nb = model.nbRows() - firstRow;
    if (nb == 0) return;
    std::vector<CoinBigIndex> start(nb + 1);
    std::vector<double> lower(nb);
    std::vector<double> upper(nb);
    const auto base = model.rowStart[firstRow];
    for (std::size_t i = 0; i < nb; ++i) {
        lower[i] = clpNumber(model.rowLower[firstRow + i]);
        upper[i] = clpNumber(model.rowUpper[firstRow + i]);
        start[i + 1] = model.rowStart[firstRow + i + 1] - base;
    }
    solver_->addRows(static_cast<int>(nb), lower.data(), upper.data(), start.data(),
                     model.column.data() + base, model.coefficient.data() + base);
}

SimplexSolver::Status ClpSimplexMethod::run(CbcWatch& watch, int mostPivots) {
    solver_->setMaximumIterations(solver_->numberIterations() + mostPivots);
    solver_->dual();
    if (watch.stopped()) return Status::Open;
    switch (solver_->status()) {
        case 0:
            takeOptimum(*solver_);
            return Status::Optimal;
        case 1: {
            multipliers_.clear();
            const std::unique_ptr<double[]> ray(solver_->infeasibilityRay());
            if (ray) multipliers_.assign(ray.get(), ray.get() + solver_->numberRows());
            return Status::Infeasible;
        }
        default:
            return Status::Open;
    }
}

void ClpSimplexMethod::takeOptimum(const ClpSimplex& solver) {
    const double* levels = solver.primalColumnSolution();
    levels_.assign(levels, levels + lower_.size());
    const double* duals = solver.dualRowSolution();
    multipliers_.assign(duals, duals + solver.numberRows());
}

template <typename Body>
SimplexSolver::Status ClpSimplexMethod::watched(Pace& pace, Body body) {
    const auto nbEntries = static_cast<std::size_t>(solver_->getNumElements());
    CbcWatch watch(pace, nbEntries, /*grace=*/0);
    Status status = Status::Open;
    // Copies of the solver have the watch, too, and none of them may keep it.
    const PivotEvents events(watch);
    solver_->passInEventHandler(&events);
    try {
        pace.spend(workPerEntry * static_cast<std::int64_t>(nbEntries));
        status = body(watch);
    } catch (const CoinError&) {
        status = Status::Open;
    }
    const ClpEventHandler nobody;
    solver_->passInEventHandler(&nobody);
    watch.rethrow();
    return status;
}

SimplexSolver::Status ClpSimplexMethod::solve(Pace& pace, int mostPivots) {
    return watched(pace, [&](CbcWatch& watch) { return run(watch, mostPivots); });
}

bool ClpSimplexMethod::minimiseViolation(Pace& pace, int mostPivots) {
    const Status status = watched(pace, [&](CbcWatch& watch) {
        ClpSimplex elastic(*solver_);
        addViolations(elastic);
        elastic.setMaximumIterations(elastic.numberIterations() + mostPivots);
        elastic.primal();
        if (watch.stopped() || elastic.status() != 0) return Status::Open;
        takeOptimum(elastic);
        return Status::Optimal;
    });
    return status == Status::Optimal;
}

SimplexSolver::Trial ClpSimplexMethod::tryBranches(std::int32_t column, double below, double above,
                                                   Pace& pace, int mostPivots) {
    constexpr int isInfeasible = 1;
    const int j = column;
    std::vector<double> levels[2];
    double* levelsAt[2];
    for (int k = 0; k < 2; ++k) {
        levels[k].resize(lower_.size());
        levelsAt[k] = levels[k].data();
    }
    int status[2] = {-1, -1};
    int nbPivots[2] = {0, 0};
    // On return these are the changes of the optimum.
    double upper = below;
    double lower = above;
    const int mostBefore = solver_->maximumIterations();
    watched(pace, [&](CbcWatch&) {
        solver_->setMaximumIterations(solver_->numberIterations() + mostPivots);
        solver_->strongBranching(1, &j, &lower, &upper, levelsAt, status, nbPivots,
                                 /*stopOnFirstInfeasible=*/false, /*alwaysFinish=*/true);
        return Status::Optimal;
    });
    solver_->setMaximumIterations(mostBefore);
    return {status[0] == isInfeasible ? HUGE_VAL : upper,
            status[1] == isInfeasible ? HUGE_VAL : lower};
}

std::vector<LinearForm> ClpSimplexMethod::integerCuts(const std::vector<std::uint8_t>& isInteger,
                                                      std::size_t most, Pace& pace) {
    constexpr std::int64_t workPerEntryOfCuts = 1000;
    std::vector<LinearForm> cuts;
    watched(pace, [&](CbcWatch&) {
        pace.spend(workPerEntryOfCuts * static_cast<std::int64_t>(solver_->getNumElements()));
        cuts = integerCutsOf(*solver_, isInteger, most);
        return Status::Optimal;
    });
    return cuts;
}

SimplexBasis ClpSimplexMethod::basis() const {
    const unsigned char* status = solver_->statusArray();
    const std::ptrdiff_t nbColumns = solver_->numberColumns();
    return {{status, status + nbColumns},
            {status + nbColumns, status + nbColumns + solver_->numberRows()}};
}

}  // namespace

std::unique_ptr<SimplexSolver> makeSimplexSolver() {
    return std::make_unique<ClpSimplexMethod>();
}

}  // namespace engine
