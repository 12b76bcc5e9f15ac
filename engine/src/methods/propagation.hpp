#pragma once

#include <memory>
#include <vector>

#include "methods/method.hpp"

namespace engine {

/// Interval propagation from the constraints: tightens the domains, bounds the objectives, and
/// refutes models whose ranges contradict each other. Starts the ground's propagator.
std::unique_ptr<Method> makePropagation(Ground& ground);

/// The same at close: false when it proves the model inconsistent.
/// @param domain  [nbDecisions], tightened in place.
bool propagateDomains(const ClosedModel& model, std::vector<Interval>& domain);

}  // namespace engine
