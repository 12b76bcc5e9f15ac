#include "back_ends/cbc_tree.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <string>
#include <thread>

#include <CbcEventHandler.hpp>
#include <CbcSolver.hpp>

namespace engine {
namespace {

/// Where the solver calls back between its stages.
constexpr int relaxationSolved = 1;
constexpr int treeSearched = 4;
constexpr int allDone = 5;

/// The solver reads its commands through variables of the process. They are read once before the
/// first stage, and not again, since the last one ends the run.
std::mutex& commandMutex() {
    static std::mutex mutex;
    return mutex;
}

/// Handing points on may take this part of the effort.
constexpr std::int64_t shareOfCompletion = 10;
constexpr std::int64_t leastCompletion = 1000;
constexpr int mostPivotsOfCompletion = 10'000;
/// Pivots for the way from a tree that was stopped to its best point.
constexpr std::int64_t enoughToEnd = 20'000;

std::string shortText(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3g", value);
    return text;
}

}  // namespace

/// Counts nodes and passes on what comes from the tree itself, not from those of its heuristics.
class CbcTree::Events final : public CbcEventHandler {
public:
    explicit Events(CbcTree& tree) : tree_(&tree) {}

    CbcAction event(CbcEvent which) override {
        const bool isMain = model_ != nullptr && model_->parentModel() == nullptr;
        switch (which) {
            case solution:
            case heuristicSolution:
                if (isMain) tree_->onPoint(*model_);
                return noAction;
            case beforeSolution1:
            case beforeSolution2:
                return noAction;
            case node:
                tree_->watch_.count();
                if (isMain) tree_->onNode(*model_);
                break;
            default:
                break;
        }
        return tree_->watch_.mustStop() ? stop : noAction;
    }
    [[nodiscard]] CbcEventHandler* clone() const override { return new Events(*this); }
    [[nodiscard]] CbcTree& tree() const { return *tree_; }

private:
    CbcTree* tree_;
};

CbcTree::CbcTree(const OsiClpSolverInterface& original, const ExactSettings& settings,
                 CbcWatch& watch)
    : original_(original),
      settings_(settings),
      watch_(watch),
      lowestCutoff_(infinity),
      bestObjective_(infinity),
      start_(commandMutex(), std::defer_lock) {}

/// @return false: stopped while another solve was starting.
bool CbcTree::takeTurnToStart() {
    while (!start_.try_lock()) {
        if (watch_.mustStop()) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

int CbcTree::onStage(CbcModel* tree, int stage) {
    const auto* events = dynamic_cast<Events*>(tree->getEventHandler());
    if (events == nullptr) return 0;
    CbcTree& self = events->tree();
    if (stage == relaxationSolved && self.start_.owns_lock()) {
        self.start_.unlock();
        self.watch_.letHold(true);
    }
    // What is left turns the best point into one of the original problem.
    if (stage == treeSearched && self.watch_.stopped()) self.watch_.finish(enoughToEnd);
    return stage == allDone ? 1 : 0;
}

void CbcTree::onNode(CbcModel& tree) {
    if (isIncomplete_) completePoint();
    if (settings_.onBound) {
        // What was cut off is no better than a cutoff.
        const double proved =
            std::min({tree.getBestPossibleObjValue(), lowestCutoff_, bestObjective_});
        settings_.onBound(proved, tree.getNodeCount());
    }
    if (!settings_.cutoff) return;
    const double cutoff = settings_.cutoff();
    if (cutoff >= tree.getCutoff()) return;
    tree.setCutoff(cutoff);
    lowestCutoff_ = std::min(lowestCutoff_, cutoff);
}

void CbcTree::onPoint(const CbcModel& tree) {
    const double* levels = tree.bestSolution();
    if (levels == nullptr || !(tree.getObjValue() < bestObjective_)) return;
    const int nbColumns = tree.getNumCols();
    const int* original = tree.originalColumns();
    if (original == nullptr && nbColumns != original_.getNumCols()) return;
    bestObjective_ = tree.getObjValue();
    column_.clear();
    for (int j = 0; j < nbColumns; ++j) column_.push_back(original != nullptr ? original[j] : j);
    levels_.assign(levels, levels + nbColumns);
    isIncomplete_ = true;
    completePoint();
}

/// The integers that the reduced problem knows are fixed, the rest is solved for in the original.
void CbcTree::completePoint() {
    if (!settings_.onPoint) return;
    if (completionEffort_ > leastCompletion + watch_.effort() / shareOfCompletion) return;
    isIncomplete_ = false;
    OsiClpSolverInterface solver(original_);
    ClpEventHandler silent;
    solver.getModelPtr()->passInEventHandler(&silent);
    solver.getModelPtr()->setMaximumIterations(mostPivotsOfCompletion);
    for (std::size_t k = 0; k < column_.size(); ++k) {
        const int j = column_[k];
        if (j < 0 || j >= solver.getNumCols() || !solver.isInteger(j)) continue;
        const double level = std::clamp(std::round(levels_[k]), solver.getColLower()[j],
                                        std::max(solver.getColLower()[j], solver.getColUpper()[j]));
        solver.setColBounds(j, level, level);
    }
    solver.setDblParam(OsiDualObjectiveLimit, COIN_DBL_MAX);
    solver.resolve();
    completionEffort_ += 1 + solver.getIterationCount();
    if (!solver.isProvenOptimal()) return;
    const double* levels = solver.getColSolution();
    settings_.onPoint({levels, levels + solver.getNumCols()});
}

void CbcTree::run(ExactAnswer& answer) {
    answer.status = ExactAnswer::Status::Open;
    if (!takeTurnToStart()) return;
    watch_.letHold(false);  // others may wait for their turn
    CbcModel model(original_);
    CbcSolverUsefulData data;
    data.noPrinting_ = true;
    data.useSignalHandler_ = false;
    CbcMain0(model, data);
    model.setLogLevel(0);
    model.messageHandler()->setLogLevel(0);
    Events events(*this);
    model.passInEventHandler(&events);
    // Nodes that promise less than this are cut: far inside what counts as the same objective.
    const std::string increment =
        shortText(1e-10 * std::max(1.0, std::fabs(original_.getObjValue())));
    const std::string seed = std::to_string(1 + settings_.seed % 1'000'000);
    const char* arguments[] = {
        "cbc",        "-log",  "0", "-increment", increment.c_str(), "-randomCbcSeed",
        seed.c_str(), "-solve"};
    CbcMain1(static_cast<int>(std::size(arguments)), arguments, model, &CbcTree::onStage, data);
    if (start_.owns_lock()) start_.unlock();
    watch_.letHold(true);

    if (const double* levels = model.bestSolution()) {
        answer.levels.assign(levels, levels + original_.getNumCols());
    }
    if (watch_.stopped() || model.status() != 0) return;
    const double own = answer.levels.empty() ? infinity : model.getObjValue();
    answer.bound = std::min(own, lowestCutoff_);
    answer.status =
        answer.bound < infinity ? ExactAnswer::Status::Optimal : ExactAnswer::Status::Infeasible;
    answer.isTreeSearched = answer.status == ExactAnswer::Status::Infeasible;
}

}  // namespace engine
