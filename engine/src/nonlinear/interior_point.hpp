#pragma once

#include "nonlinear/local_problem.hpp"

namespace engine {

/// A local solve by a primal-dual interior point method with a filter line search (Wächter and
/// Biegler, "On the implementation of an interior-point filter line-search algorithm for
/// large-scale nonlinear programming", Mathematical Programming 106, 2006), needing no library
/// beside the engine's own.
///
/// Different from there: equations carry a small dual shift at all times, so that systems are
/// factorised without pivoting; and where the line search fails, violation is reduced by
/// Levenberg-Marquardt steps inside the bounds instead of a second nonlinear program.
///
/// Answers as the back end does. Deterministic but for the pace's wish to end.
NonlinearAnswer solveByInteriorPoint(LocalProblem& problem, const NonlinearSettings& settings);

}  // namespace engine
