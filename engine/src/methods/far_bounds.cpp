#include "methods/far_bounds.hpp"

#include <cfloat>
#include <cmath>

#include "operators/range.hpp"

namespace engine {

bool isFar(double bound, double tolerance) {
    return std::fabs(bound) * DBL_EPSILON > 0.01 * tolerance;
}

bool openFarBounds(ExactProblem& problem, double tolerance) {
    bool opened = false;
    for (std::size_t j = 0; j < problem.lower.size(); ++j) {
        // The near side stays: a column that starts at 1e9 has no business at 0.
        if (problem.lower[j] < 0.0 && isFar(problem.lower[j], tolerance)) {
            opened = opened || std::isfinite(problem.lower[j]);
            problem.lower[j] = -infinity;
        }
        if (problem.upper[j] > 0.0 && isFar(problem.upper[j], tolerance)) {
            opened = opened || std::isfinite(problem.upper[j]);
            problem.upper[j] = infinity;
        }
    }
    return opened;
}

bool restoreMissedBounds(ExactProblem& problem, const ExactProblem& bounded,
                         const std::vector<double>& levels) {
    bool restored = false;
    for (std::size_t j = 0; j < problem.lower.size(); ++j) {
        const double slack = levels.empty() ? 0.0 : 1e-6 * std::fmax(1.0, std::fabs(levels[j]));
        if (problem.lower[j] != bounded.lower[j] &&
            (levels.empty() || levels[j] < bounded.lower[j] - slack)) {
            problem.lower[j] = bounded.lower[j];
            restored = true;
        }
        if (problem.upper[j] != bounded.upper[j] &&
            (levels.empty() || levels[j] > bounded.upper[j] + slack)) {
            problem.upper[j] = bounded.upper[j];
            restored = true;
        }
    }
    return restored;
}

}  // namespace engine
