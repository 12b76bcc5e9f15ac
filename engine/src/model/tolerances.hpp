#pragma once

namespace engine {

/// The ladder of tolerances. Each rung keeps to the one above with room for what the rung above
/// adds in rounding, so that a point which passes below passes above too. All are absolute, and
/// relative to the larger side where that is above 1.

/// Relations between doubles hold within this. It is what the interface promises: the judge's rule,
/// and with it the nearness at which an objective counts as proved.
constexpr double relationTolerance = 1e-6;

/// Rows and bounds of the linear solvers. A tenth of the above: rows are scaled and presolved, and
/// a point that misses a row by this still passes the judge.
constexpr double backEndTolerance = 1e-7;

/// Where a point is cleaned: the polish of the best point, the continuous part solved again for
/// rounded integers, masters that tangents tighten. The linear solvers reach it, not much less.
/// Also the nearness at which two objective values are the same.
constexpr double polishTolerance = 1e-9;

/// What sums of some thousand terms lose by rounding: the least gain that is one, and the least
/// slope or share that is not 0.
constexpr double roundingTolerance = 1e-12;

}  // namespace engine
