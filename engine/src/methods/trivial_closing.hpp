#pragma once

#include <memory>

#include "methods/method.hpp"

namespace engine {

/// Judges the start, and the start moved into the tightened domains, against the bounds that
/// propagation gives the objectives. Moves the ground's start.
std::unique_ptr<Method> makeTrivialClosing(Ground& ground);

}  // namespace engine
