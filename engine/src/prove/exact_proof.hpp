#pragma once

#include <cstdint>
#include <string>

#include "prove/incumbent.hpp"
#include "prove/pace.hpp"
#include "prove/prepare.hpp"
#include "prove/propagator.hpp"

namespace engine {

struct ExactProof {
    Preparation::Outcome outcome = Preparation::Outcome::Open;
    std::string proof;  ///< one line, empty when open
};

/// How an exact proof runs.
struct ExactRun {
    Pace& pace;  ///< a step is a node or a pivot
    int seed;
    ProofKind& kind;  ///< set as soon as it is known
};

/// Solves a linear model by the exact back end, objective by objective when there are several, and
/// a convex one by proveByOuterApproximation.
///
/// Points found are cleaned (integers rounded, the rest solved again for them), judged, and offered
/// to the incumbent. Optimal is claimed when the incumbent's objectives, as judged, equal the
/// proved bounds within 1e-9 (relative above 1), or nearer than two values of an all-integer
/// objective can be. Inconsistent is claimed for the rows relaxed by the judge's tolerance: with
/// multipliers checked here in safe arithmetic, or when the tree found no point; the tree's
/// completeness, and the optimality of its bound, are the back end's word.
///
/// @param propagator  started without conflict.
/// @param start       values of decisions that the model does not use.
ExactProof proveExactly(const ClosedModel& model, const Propagator& propagator, const Point& start,
                        ProvedIncumbent& incumbent, ExactRun run);

}  // namespace engine
