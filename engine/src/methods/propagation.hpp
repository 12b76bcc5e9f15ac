#pragma once

#include <memory>
#include <optional>

#include "evaluate/propagator.hpp"
#include "methods/method.hpp"

namespace engine {

/// Interval propagation from the constraints: tightens the domains, bounds the objectives, and
/// refutes models whose ranges contradict each other. Starts the ground's propagator.
std::unique_ptr<Method> makePropagation(Ground& ground);

/// The same at close: what it leaves is the ground of the first solve.
/// @return nothing when it proves the model inconsistent.
std::optional<Propagator> propagatedRoot(const ClosedModel& model);

}  // namespace engine
