#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "evaluate/pace.hpp"
#include "linear/linear_model.hpp"
#include "model/tolerances.hpp"

namespace engine {

/// What an exact back end is asked: minimise cost over the columns and rows of `model`, with other
/// bounds maybe.
struct ExactProblem {
    const LinearModel& model;
    std::vector<double> cost;      ///< [nbColumns]
    std::vector<double> lower;     ///< [nbColumns] -infinity allowed
    std::vector<double> upper;     ///< [nbColumns] infinity allowed
    std::vector<double> rowLower;  ///< [nbRows]
    std::vector<double> rowUpper;  ///< [nbRows]
};

struct ExactSettings {
    Pace& pace;    ///< told of every node and pivot; asked some fifty times a second where possible
    int seed = 0;  ///< 0 or more
    double feasibilityTolerance = backEndTolerance;  ///< absolute, of rows and bounds
    /// Pivots granted when the pace has ended already.
    std::int64_t grace = 0;
    /// Costs from here on are of no interest; asked at every node, or none.
    std::function<double()> cutoff = {};
    /// Receives the best proved lower bound of the cost and the number of nodes searched, at every
    /// node; or none.
    std::function<void(double bound, std::int64_t nbNodes)> onBound = {};
    /// Receives the levels [nbColumns] of points as they are found, within the tolerances; or none.
    std::function<void(const std::vector<double>&)> onPoint = {};
};

struct ExactAnswer {
    /// Open: stopped, out of budget, or the solver gave no clear answer.
    enum class Status { Optimal, Infeasible, Unbounded, Open };
    Status status = Status::Open;
    double bound = 0.0;          ///< Optimal: the proved minimum, or the cutoff if that is lower
    std::vector<double> levels;  ///< [nbColumns] best point within the tolerances, or empty
    /// [nbRows] Infeasible: the relaxation's multipliers that show it; Optimal without integers:
    /// the dual values; either sign, as good as the solver's doubles are; or empty.
    std::vector<double> multipliers;
    bool isTreeSearched = false;  ///< Infeasible: the relaxation is not, but the whole tree
};

/// Name and version for the information text; empty in a build without a back end.
std::string_view exactBackEndName();

/// What the back end can prove; false for all in a build without.
struct ExactAbilities {
    bool linear;
    bool integer;
};
ExactAbilities exactBackEndAbilities();

/// Solves in the calling thread, silently; leaves no global state and no signal handler behind.
/// Deterministic but for the pace's wish to end; an exception of the pace ends the solve and passes
/// through. A problem with numbers outside the range that the solver documents is not put to it:
/// Open, as in a build without a back end.
ExactAnswer solveExactly(const ExactProblem& problem, const ExactSettings& settings);

}  // namespace engine
