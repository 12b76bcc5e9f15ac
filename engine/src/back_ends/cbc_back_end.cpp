// The exact back end over Cbc (branch and cut) and Clp (simplex).
#include <algorithm>
#include <cmath>
#include <memory>

#include <ClpSimplex.hpp>
#include <ClpSolve.hpp>
#include <CoinError.hpp>
#include <OsiClpSolverInterface.hpp>

#include "back_ends/cbc_range.hpp"
#include "back_ends/cbc_tree.hpp"
#include "back_ends/cbc_watch.hpp"
#include "back_ends/exact_back_end.hpp"

namespace engine {
namespace {

/// Simplex options of the solver's own defaults, but without its handler for interrupts.
ClpSolve quietOptions() {
    constexpr int interruptHandling = 2;
    constexpr int none = 1;
    ClpSolve options;
    options.setSpecialOption(interruptHandling, none);
    return options;
}

CoinPackedMatrix matrixOf(const LinearModel& m) {
    return {/*colordered=*/false,
            static_cast<int>(m.nbColumns()),
            static_cast<int>(m.nbRows()),
            static_cast<CoinBigIndex>(m.column.size()),
            m.coefficient.data(),
            m.column.data(),
            m.rowStart.data(),
            /*len=*/nullptr};
}

/// One exact solve from loading to the answer.
class CbcSolve {
public:
    CbcSolve(const ExactProblem& problem, const ExactSettings& settings)
        : problem_(problem),
          settings_(settings),
          watch_(settings.pace, problem.model.column.size(), settings.grace),
          isCalm_(CbcRange::isCalm(problem)) {}

    ExactAnswer run();

private:
    void load();
    void solveRelaxation();
    void readMultipliers(const double* ofRows);
    void readContinuous();
    void solveInteger();
    [[nodiscard]] bool hasIntegers() const {
        const auto& isInteger = problem_.model.isInteger;
        return std::find(isInteger.begin(), isInteger.end(), 1) != isInteger.end();
    }

    const ExactProblem& problem_;
    const ExactSettings& settings_;
    CbcWatch watch_;
    bool isCalm_;  ///< otherwise no presolve, no scaling and no tree
    OsiClpSolverInterface solver_;
    ExactAnswer answer_;
};

void CbcSolve::load() {
    const LinearModel& m = problem_.model;
    solver_.messageHandler()->setLogLevel(0);
    solver_.getModelPtr()->messageHandler()->setLogLevel(0);
    solver_.setHintParam(OsiDoReducePrint, true, OsiHintTry);
    solver_.loadProblem(matrixOf(m), problem_.lower.data(), problem_.upper.data(),
                        problem_.cost.data(), problem_.rowLower.data(), problem_.rowUpper.data());
    for (std::size_t j = 0; j < m.nbColumns(); ++j) {
        if (m.isInteger[j] != 0) solver_.setInteger(static_cast<int>(j));
    }
    solver_.setDblParam(OsiPrimalTolerance, settings_.feasibilityTolerance);
    solver_.setDblParam(OsiDualTolerance, settings_.feasibilityTolerance);
    solver_.setSolveOptions(quietOptions());
    if (!isCalm_) solver_.getModelPtr()->scaling(0);
    PivotEvents events(watch_);
    solver_.getModelPtr()->passInEventHandler(&events);
}

void CbcSolve::solveRelaxation() {
    ClpSimplex& simplex = *solver_.getModelPtr();
    ClpSolve options = quietOptions();
    if (!isCalm_) options.setPresolveType(ClpSolve::presolveOff);
    simplex.initialSolve(options);
    // Presolve may leave small infeasibilities or no clear answer: then once more without.
    if (!watch_.stopped() && simplex.status() != 0) simplex.dual();
    if (watch_.stopped()) return;
    switch (simplex.status()) {
        case 0:
            answer_.status = ExactAnswer::Status::Optimal;
            answer_.bound = simplex.objectiveValue();
            break;
        case 1: {
            answer_.status = ExactAnswer::Status::Infeasible;
            const std::unique_ptr<double[]> ray(simplex.infeasibilityRay());
            readMultipliers(ray.get());
            break;
        }
        case 2:
            answer_.status = ExactAnswer::Status::Unbounded;
            break;
        default:
            break;
    }
}

void CbcSolve::readMultipliers(const double* ofRows) {
    if (ofRows != nullptr) answer_.multipliers.assign(ofRows, ofRows + problem_.model.nbRows());
}

void CbcSolve::readContinuous() {
    const double* levels = solver_.getColSolution();
    answer_.levels.assign(levels, levels + problem_.model.nbColumns());
    readMultipliers(solver_.getModelPtr()->dualRowSolution());
}

void CbcSolve::solveInteger() {
    answer_.status = ExactAnswer::Status::Open;
    if (settings_.onBound) settings_.onBound(answer_.bound, 0);
    if (isCalm_) CbcTree(solver_, settings_, watch_).run(answer_);
}

ExactAnswer CbcSolve::run() {
    try {
        load();
        solveRelaxation();
        if (answer_.status == ExactAnswer::Status::Optimal) {
            hasIntegers() ? solveInteger() : readContinuous();
        }
    } catch (const CoinError&) {
        // The solver gave up: nothing is proved, and what it had is not to be trusted.
        answer_ = {};
    }
    watch_.rethrow();
    return std::move(answer_);
}

}  // namespace

std::string_view exactBackEndName() {
    return "Cbc " CBC_VERSION ", Clp " CLP_VERSION;
}

ExactAbilities exactBackEndAbilities() {
    return {.linear = true, .integer = true};
}

ExactAnswer solveExactly(const ExactProblem& problem, const ExactSettings& settings) {
    ExactProblem reachable = problem;
    CbcRange::dropUnreachableSides(reachable);
    if (!CbcRange::holds(reachable, settings.feasibilityTolerance)) return {};
    return CbcSolve(reachable, settings).run();
}

}  // namespace engine
