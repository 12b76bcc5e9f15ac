#pragma once

#include <optional>
#include <utility>

#include "evaluate/propagator.hpp"
#include "linear/linear_model.hpp"
#include "model/closed_model.hpp"

namespace engine {

/// What the methods of one solve share. Methods of one stage only read it while they run.
struct Ground {
    /// @param closed  outlives this.
    /// @param from    the starting point.
    /// @param root    started already, without conflict; or none.
    Ground(const ClosedModel& closed, Point from, int seedOfSolve, const Propagator* root = nullptr)
        : model(closed),
          start(std::move(from)),
          seed(seedOfSolve),
          propagator(root != nullptr ? *root : Propagator(closed)),
          isPropagated(root != nullptr) {}

    const ClosedModel& model;
    /// The starting point; moved into the tightened domains once there are any.
    Point start;
    int seed;
    /// Ranges at the root: started without conflict when the first stage has ended. Who branches
    /// works on a copy.
    Propagator propagator;
    bool isPropagated;  ///< from the beginning: at close

    /// What the linear view says of the model: linear when nothing in it is curved. Made when first
    /// asked, by the stage's choice of methods. @return null: there is none.
    [[nodiscard]] const LinearModel* linearModel();
    /// Hands it over, to the one method that works on it.
    [[nodiscard]] LinearModel takeLinearModel() { return *std::exchange(linear_, std::nullopt); }

private:
    std::optional<LinearModel> linear_;
    bool isLinearKnown_ = false;
};

}  // namespace engine
