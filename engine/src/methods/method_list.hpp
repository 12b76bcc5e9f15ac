#pragma once

#include <memory>
#include <vector>

#include "methods/method.hpp"

namespace engine {

/// Methods that run side by side, each by its weight.
using Stage = std::vector<std::unique_ptr<Method>>;

/// All methods, in stages that follow one another. A stage ends when all its methods have ended.
/// @param ground             outlives them.
/// @param withExactBackEnds  false leaves those out that rest on a library: measures the rest
/// alone.
std::vector<Stage> makeStages(Ground& ground, bool withExactBackEnds = true);

/// Names of the back ends built in, for the information text; empty without.
std::string backEndNames();

}  // namespace engine
