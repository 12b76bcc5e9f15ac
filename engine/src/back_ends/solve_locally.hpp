#pragma once

#include "nonlinear/local_problem.hpp"

namespace engine {

/// A local optimum near the start, or a point of the rows: by the nonlinear back end where there is
/// one, else by the engine's own interior point method. Points count only after the judge: what is
/// no row is not looked at, and the rows hold within the settings' tolerance.
NonlinearAnswer solveLocally(const NonlinearProblem& problem, const NonlinearSettings& settings);

}  // namespace engine
