#pragma once

#include <memory>

#include "methods/method.hpp"

namespace engine {

/// Points of nonlinear models from local solves with second derivatives.
///
/// A continuous model is solved from its start, then from scattered and perturbed starts. A mixed
/// one is relaxed; dives fix integers near the relaxation's levels, by propagation and in portions,
/// and solve the rest again; neighbourhoods of the incumbent are searched by dives with most
/// integers fixed at its values (Danna, Rothberg and Le Pape, "Exploring relaxation induced
/// neighborhoods to improve MIP solutions", Mathematical Programming 102, 2005, with random
/// portions where there is no relaxation to compare with). Points of others are solved again with
/// their integers. Every point is judged before it counts.
///
/// The first ones start before all others, from the starting point and for mixed models with dives,
/// and end after about a second; the further ones go on to the end of the solve.
std::unique_ptr<Method> makeFirstLocalSolves(Ground& ground);
std::unique_ptr<Method> makeLocalSolves(Ground& ground);

}  // namespace engine
