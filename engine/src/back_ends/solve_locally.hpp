#pragma once

#include "nonlinear/local_problem.hpp"

namespace engine {

/// A local optimum near the start, or a point of the rows. Problems of moderate size go to the
/// engine's own interior point method, which starts faster, and where that does not reach the rows,
/// to the nonlinear back end; large ones to the back end at once, whose linear algebra is better.
/// Without a back end all is our own. Points count only after the judge: what is no row is not
/// looked at, and the rows hold within the settings' tolerance.
NonlinearAnswer solveLocally(const NonlinearProblem& problem, const NonlinearSettings& settings);

}  // namespace engine
