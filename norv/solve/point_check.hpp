#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "norv/model.hpp"

namespace norv {

/// Largest violation that passes: absolute, and relative to the larger of the two sides compared.
/// Integrality is absolute.
constexpr double checkTolerance = 1e-6;

/// What the host's own evaluator says about the levels in a model.
struct PointCheck {
    bool passed = true;
    double largestViolation = 0.0;    ///< scaled: divided by max(1, magnitude of both sides)
    std::string worst;                ///< what is violated most, empty when nothing is
    std::int64_t nbViolated = 0;      ///< rows, bounds and variables beyond the tolerance
    std::int64_t nbViolatedRows = 0;  ///< those of them that are rows
    /// Rows that hold, or the objective's value, by the tolerance of a relation inside alone.
    std::int64_t nbLoose = 0;
    std::string loose;  ///< the first of them: "row r: relation 2.9999999 >= 3"
};

/// Checks the levels against all rows, bounds, integrality, semi-continuity and special ordered
/// sets, and the objective in the statistics record against the evaluator's. Relations inside
/// functions are exact; a row that only they violate passes as loose when the tolerance makes it
/// hold.
PointCheck checkPoint(const Model& model);

/// The same for another point, without the objective.
/// @param levels  [nbVariables]
PointCheck checkLevels(const Model& model, std::span<const double> levels);

/// Something that a point violates.
struct Violation {
    double size;       ///< scaled
    std::string what;  ///< "row staff", "variable x"
};
/// The largest ones beyond the tolerance, at most so many.
std::vector<Violation> worstViolations(const Model& model, std::span<const double> levels,
                                       std::size_t nbMost);

/// Does another point hold all rows, bounds, integrality, semi-continuity and sets, within the
/// tolerance?
/// @param levels  [nbVariables]
bool isFeasible(const Model& model, std::span<const double> levels);

/// Does the model status claim a feasible point?
bool claimsFeasiblePoint(std::int32_t modelStatus);

}  // namespace norv
