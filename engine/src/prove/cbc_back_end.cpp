// The exact back end over Cbc (branch and cut) and Clp (simplex).
#include <algorithm>
#include <cmath>
#include <memory>

#include <CbcBranchDefaultDecision.hpp>
#include <CbcCompareDefault.hpp>
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

void load(const ExactProblem& problem, const ExactSettings& settings, CbcWatch& watch,
          OsiClpSolverInterface& solver) {
    const LinearModel& m = problem.model;
    const auto nbColumns = static_cast<int>(m.nbColumns());
    const auto nbRows = static_cast<int>(m.nbRows());
    const CoinPackedMatrix rows(/*colordered=*/false, nbColumns, nbRows,
                                static_cast<CoinBigIndex>(m.column.size()), m.coefficient.data(),
                                m.column.data(), m.rowStart.data(), /*len=*/nullptr);
    solver.messageHandler()->setLogLevel(0);
    solver.getModelPtr()->messageHandler()->setLogLevel(0);
    solver.setHintParam(OsiDoReducePrint, true, OsiHintTry);
    solver.loadProblem(rows, problem.lower.data(), problem.upper.data(), problem.cost.data(),
                       problem.rowLower.data(), problem.rowUpper.data());
    for (int j = 0; j < nbColumns; ++j) {
        if (m.isInteger[static_cast<std::size_t>(j)] != 0) solver.setInteger(j);
    }
    solver.setDblParam(OsiPrimalTolerance, settings.feasibilityTolerance);
    solver.setDblParam(OsiDualTolerance, settings.feasibilityTolerance);
    solver.setSolveOptions(quietOptions());
    PivotEvents events(watch);
    solver.getModelPtr()->passInEventHandler(&events);
}

/// One exact solve from loading to the answer.
class CbcSolve {
public:
    CbcSolve(const ExactProblem& problem, const ExactSettings& settings)
        : problem_(problem), settings_(settings), watch_(settings) {}

    ExactAnswer run();

private:
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
    OsiClpSolverInterface solver_;
    ExactAnswer answer_;
};

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
    if (ray) answer_.farkas.assign(ray.get(), ray.get() + problem_.model.nbRows());
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
    tree.setRandomSeed(1 + settings_.seed % 1000000);
    addCutGenerators(tree);
    addHeuristics(tree);
    CbcBranchDefaultDecision decision;
    tree.setBranchingMethod(decision);
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
        load(problem_, settings_, watch_, solver_);
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
