// The exact back end over Cbc (branch and cut) and Clp (simplex).
#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <random>

#include <CbcBranchDefaultDecision.hpp>
#include <CbcCompareActual.hpp>
#include <CbcCompareEstimate.hpp>
#include <CbcHeuristicDiveCoefficient.hpp>
#include <CbcHeuristicFPump.hpp>
#include <CbcHeuristicLocal.hpp>
#include <CbcHeuristicRINS.hpp>
#include <CbcModel.hpp>
#include <CglClique.hpp>
#include <CglFlowCover.hpp>
#include <CglGomory.hpp>
#include <CglKnapsackCover.hpp>
#include <CglMixedIntegerRounding2.hpp>
#include <CglPreProcess.hpp>
#include <CglProbing.hpp>
#include <CglTwomir.hpp>
#include <CglZeroHalf.hpp>
#include <ClpSimplex.hpp>
#include <ClpSolve.hpp>
#include <CoinError.hpp>
#include <OsiClpSolverInterface.hpp>

#include "prove/cbc_watch.hpp"
#include "prove/exact_back_end.hpp"

namespace engine {
namespace {

constexpr double integralityTolerance = 1e-7;

/// Simplex options of the solver's own defaults, but without its handler for interrupts.
ClpSolve quietOptions() {
    constexpr int interruptHandling = 2;
    constexpr int none = 1;
    ClpSolve options;
    options.setSpecialOption(interruptHandling, none);
    return options;
}

/// The rows in the order in which they are loaded: their own for variant 0, else shuffled. Another
/// order means other pivots, cuts and branches: trees that are luckless in one often end in
/// another.
std::vector<std::size_t> orderOfRows(std::size_t nbRows, int variant) {
    std::vector<std::size_t> order(nbRows);
    std::iota(order.begin(), order.end(), std::size_t{0});
    if (variant == 0) return order;
    std::mt19937_64 random(static_cast<std::uint64_t>(variant));
    for (std::size_t k = nbRows; k > 1; --k) std::swap(order[k - 1], order[random() % k]);
    return order;
}

CoinPackedMatrix matrixOf(const LinearModel& m, const std::vector<std::size_t>& order) {
    std::vector<int> start{0};
    std::vector<int> column;
    std::vector<double> coefficient;
    for (const std::size_t i : order) {
        const auto first = m.rowStart[i];
        const auto last = m.rowStart[i + 1];
        column.insert(column.end(), m.column.begin() + first, m.column.begin() + last);
        coefficient.insert(coefficient.end(), m.coefficient.begin() + first,
                           m.coefficient.begin() + last);
        start.push_back(static_cast<int>(column.size()));
    }
    return {/*colordered=*/false,
            static_cast<int>(m.nbColumns()),
            static_cast<int>(m.nbRows()),
            static_cast<CoinBigIndex>(column.size()),
            coefficient.data(),
            column.data(),
            start.data(),
            /*len=*/nullptr};
}

std::vector<double> inOrder(const std::vector<double>& sides,
                            const std::vector<std::size_t>& order) {
    std::vector<double> permuted;
    permuted.reserve(sides.size());
    for (const std::size_t i : order) permuted.push_back(sides[i]);
    return permuted;
}

/// One exact solve from loading to the answer.
class CbcSolve {
public:
    CbcSolve(const ExactProblem& problem, const ExactSettings& settings)
        : problem_(problem),
          settings_(settings),
          watch_(settings),
          order_(orderOfRows(problem.model.nbRows(), settings.variant)) {}

    ExactAnswer run();

private:
    void load();
    void solveRelaxation();
    void readRay();
    void solveInteger();
    void configure(CbcModel& tree) const;
    bool restoreBest(CbcModel& tree);
    void readLevels();
    [[nodiscard]] bool hasIntegers() const {
        const auto& isInteger = problem_.model.isInteger;
        return std::find(isInteger.begin(), isInteger.end(), 1) != isInteger.end();
    }

    const ExactProblem& problem_;
    const ExactSettings& settings_;
    CbcWatch watch_;
    std::vector<std::size_t> order_;  ///< [nbRows] model row of each loaded row
    OsiClpSolverInterface solver_;
    ExactAnswer answer_;
};

void CbcSolve::load() {
    const LinearModel& m = problem_.model;
    solver_.messageHandler()->setLogLevel(0);
    solver_.getModelPtr()->messageHandler()->setLogLevel(0);
    solver_.setHintParam(OsiDoReducePrint, true, OsiHintTry);
    solver_.loadProblem(matrixOf(m, order_), problem_.lower.data(), problem_.upper.data(),
                        problem_.cost.data(), inOrder(problem_.rowLower, order_).data(),
                        inOrder(problem_.rowUpper, order_).data());
    for (std::size_t j = 0; j < m.nbColumns(); ++j) {
        if (m.isInteger[j] != 0) solver_.setInteger(static_cast<int>(j));
    }
    solver_.setDblParam(OsiPrimalTolerance, settings_.feasibilityTolerance);
    solver_.setDblParam(OsiDualTolerance, settings_.feasibilityTolerance);
    solver_.setSolveOptions(quietOptions());
    PivotEvents events(watch_);
    solver_.getModelPtr()->passInEventHandler(&events);
}

void CbcSolve::solveRelaxation() {
    ClpSimplex& simplex = *solver_.getModelPtr();
    ClpSolve options = quietOptions();
    simplex.initialSolve(options);
    // Presolve may leave small infeasibilities or no clear answer: then once more without.
    if (!watch_.stopped() && simplex.status() != 0) simplex.dual();
    if (watch_.stopped()) return;
    switch (simplex.status()) {
        case 0:
            answer_.status = ExactAnswer::Status::Optimal;
            answer_.bound = simplex.objectiveValue();
            break;
        case 1:
            answer_.status = ExactAnswer::Status::Infeasible;
            readRay();
            break;
        case 2:
            answer_.status = ExactAnswer::Status::Unbounded;
            break;
        default:
            break;
    }
}

void CbcSolve::readRay() {
    const std::unique_ptr<double[]> ray(solver_.getModelPtr()->infeasibilityRay());
    if (!ray) return;
    answer_.farkas.resize(order_.size());
    for (std::size_t k = 0; k < order_.size(); ++k) answer_.farkas[order_[k]] = ray[k];
}

void CbcSolve::readLevels() {
    const double* levels = solver_.getColSolution();
    answer_.levels.assign(levels, levels + problem_.model.nbColumns());
}

void addCutGenerators(CbcModel& tree) {
    constexpr int whileUseful = -98;
    constexpr int atRootOnly = -99;
    CglProbing probing;
    probing.setUsingObjective(1);
    probing.setMaxPass(1);
    probing.setMaxPassRoot(1);
    probing.setMaxProbe(10);
    probing.setMaxProbeRoot(50);
    probing.setMaxLook(10);
    probing.setMaxLookRoot(50);
    probing.setMaxElements(200);
    probing.setMaxElementsRoot(300);
    probing.setRowCuts(3);
    tree.addCutGenerator(&probing, whileUseful, "Probing");
    CglGomory gomory;
    gomory.setLimitAtRoot(1000);
    gomory.setLimit(50);
    tree.addCutGenerator(&gomory, whileUseful, "Gomory");
    CglKnapsackCover knapsack;
    tree.addCutGenerator(&knapsack, whileUseful, "Knapsack");
    CglClique clique(/*setPacking=*/false, /*justOriginalRows=*/true);
    clique.setStarCliqueReport(false);
    clique.setRowCliqueReport(false);
    clique.setMinViolation(0.1);
    tree.addCutGenerator(&clique, whileUseful, "Clique");
    CglMixedIntegerRounding2 rounding(1, true, 1);
    tree.addCutGenerator(&rounding, whileUseful, "MixedIntegerRounding2");
    CglFlowCover flow;
    tree.addCutGenerator(&flow, whileUseful, "FlowCover");
    CglTwomir twomir;
    twomir.setMaxElements(250);
    tree.addCutGenerator(&twomir, atRootOnly, "TwoMirCuts");
    CglZeroHalf zeroHalf;
    tree.addCutGenerator(&zeroHalf, whileUseful, "ZeroHalf");
}

void addHeuristics(CbcModel& tree) {
    CbcRounding rounding(tree);
    tree.addHeuristic(&rounding);
    CbcHeuristicFPump pump(tree);
    pump.setMaximumPasses(30);
    tree.addHeuristic(&pump);
    CbcHeuristicDiveCoefficient dive(tree);
    tree.addHeuristic(&dive);
    CbcHeuristicRINS neighbourhood(tree);
    neighbourhood.setHowOften(100);
    tree.addHeuristic(&neighbourhood);
    CbcHeuristicLocal local(tree);
    tree.addHeuristic(&local);
}

/// The strategy of the stand-alone solver, as far as it is not the tree's own default.
void CbcSolve::configure(CbcModel& tree) const {
    tree.setLogLevel(0);
    tree.messageHandler()->setLogLevel(0);
    tree.solver()->setHintParam(OsiDoReducePrint, true, OsiHintTry);
    addCutGenerators(tree);
    addHeuristics(tree);
    CbcBranchDefaultDecision decision;
    tree.setBranchingMethod(decision);
    // By bound and estimated rounding cost; the default dives for points first.
    CbcCompareEstimate byEstimate;
    if (settings_.variant % 2 == 1) tree.setNodeComparison(byEstimate);
    tree.setNumberStrong(5);
    tree.setNumberBeforeTrust(10);
    const int nbColumns = tree.getNumCols();
    tree.setMaximumCutPassesAtRoot(nbColumns < 500 ? -100 : nbColumns < 5000 ? 100 : 20);
    tree.setMaximumCutPasses(4);
    const double value = std::fabs(tree.solver()->getObjValue());
    tree.setMinimumDrop(std::min(0.05, value * 1e-3 + 1e-4));
    tree.setIntegerTolerance(integralityTolerance);
    tree.setAllowableGap(0.0);
    tree.setAllowableFractionGap(0.0);
    // Nodes that promise less than this are cut: far inside what counts as the same objective.
    tree.setCutoffIncrement(1e-10 * std::max(1.0, value));
}

/// Brings the tree's solver to the best point, which it has left when the search was stopped.
/// @return false: the solver cannot reproduce it.
bool CbcSolve::restoreBest(CbcModel& tree) {
    OsiSolverInterface& solver = *tree.solver();
    watch_.finish();
    for (int j = 0; j < solver.getNumCols(); ++j) {
        if (!solver.isInteger(j)) continue;
        const double level = std::round(tree.bestSolution()[j]);
        solver.setColBounds(j, level, level);
    }
    solver.setDblParam(OsiDualObjectiveLimit, COIN_DBL_MAX);
    solver.resolve();
    return solver.isProvenOptimal();
}

void CbcSolve::solveInteger() {
    answer_.status = ExactAnswer::Status::Open;
    CglPreProcess preprocess;
    preprocess.messageHandler()->setLogLevel(0);
    // Owned by `preprocess`.
    OsiSolverInterface* reduced = preprocess.preProcess(solver_, /*makeEquality=*/false, 5);
    if (watch_.stopped()) return;
    if (reduced == nullptr) {
        answer_.status = ExactAnswer::Status::Infeasible;
        return;
    }
    reduced->messageHandler()->setLogLevel(0);
    reduced->resolve();
    if (watch_.stopped()) return;
    CbcModel tree(*reduced);
    tree.initialSolve();
    configure(tree);
    NodeEvents events(watch_);
    tree.passInEventHandler(&events);
    tree.branchAndBound();
    const bool finished = !watch_.stopped() && tree.status() == 0;
    if (tree.bestSolution() != nullptr && restoreBest(tree)) {
        preprocess.postProcess(*tree.solver());
        readLevels();
    }
    if (!finished) return;
    if (tree.isProvenOptimal()) {
        answer_.status = ExactAnswer::Status::Optimal;
        answer_.bound = tree.getObjValue();
    } else if (tree.isProvenInfeasible() && tree.bestSolution() == nullptr) {
        answer_.status = ExactAnswer::Status::Infeasible;
    }
}

ExactAnswer CbcSolve::run() {
    try {
        load();
        solveRelaxation();
        if (answer_.status == ExactAnswer::Status::Optimal) {
            hasIntegers() ? solveInteger() : readLevels();
        }
    } catch (const CoinError&) {
        // The solver gave up: nothing is proved, and what it had is not to be trusted.
        answer_ = {};
    }
    watch_.rethrow();
    answer_.effort = watch_.effort();
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
    return CbcSolve(problem, settings).run();
}

}  // namespace engine
