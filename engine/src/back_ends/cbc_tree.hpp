#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

#include <CbcModel.hpp>
#include <OsiClpSolverInterface.hpp>

#include "back_ends/cbc_watch.hpp"
#include "back_ends/exact_back_end.hpp"
#include "operators/range.hpp"

namespace engine {

/// Branch and cut over a mixed-integer linear problem, by the whole strategy of Cbc's stand-alone
/// solver: preprocessing with probing, heuristics with small trees, its choice of cuts.
///
/// Points come out as soon as they are found, cutoffs go in at every node.
class CbcTree {
public:
    /// @param original  loaded and solved without integrality; outlives this, is not changed.
    CbcTree(const OsiClpSolverInterface& original, const ExactSettings& settings, CbcWatch& watch);

    /// Status, bound and levels of `answer`; the caller adds the effort.
    void run(ExactAnswer& answer);

private:
    class Events;

    static int onStage(CbcModel* tree, int stage);
    void onNode(CbcModel& tree);
    void onPoint(const CbcModel& tree);
    void completePoint();
    bool takeTurnToStart();

    const OsiClpSolverInterface& original_;
    const ExactSettings& settings_;
    CbcWatch& watch_;
    double lowestCutoff_;                ///< that was imposed on the tree
    double bestObjective_;               ///< of the tree's points
    std::vector<int> column_;            ///< of the best point: of the original problem
    std::vector<double> levels_;         ///< [column_.size()]
    bool isIncomplete_ = false;          ///< the best point is not handed on yet
    std::int64_t completionEffort_ = 0;  ///< pivots spent on handing points on
    std::unique_lock<std::mutex> start_;
};

}  // namespace engine
