#pragma once

#include "nonlinear/local_problem.hpp"

namespace engine {

/// A local solve by a primal-dual interior point method (Wächter and Biegler, "On the
/// implementation of an interior-point filter line-search algorithm for large-scale nonlinear
/// programming", Mathematical Programming 106, 2006).
NonlinearAnswer solveByInteriorPoint(LocalProblem& problem, const NonlinearSettings& settings);

}  // namespace engine
