#pragma once

#include <string_view>

#include "nonlinear/local_problem.hpp"

namespace engine {

/// Name and version of the library for the information text; empty in a build without one.
std::string_view nonlinearBackEndName();

/// Solves by the library, in the calling thread, silently; leaves nothing behind but the process's
/// lock around what the library shares between threads. Deterministic but for the pace's wish to
/// end; an exception of the pace ends the solve and passes through. In a build without a back end:
/// Open without levels.
NonlinearAnswer solveByBackEnd(LocalProblem& problem, const NonlinearSettings& settings);

}  // namespace engine
