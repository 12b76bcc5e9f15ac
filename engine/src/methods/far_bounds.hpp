#pragma once

#include "back_ends/exact_back_end.hpp"

namespace engine {

/// A bound so large that a level there is rounded by more than a hundredth of the tolerance, 4.5e6
/// for 1e-7: it spoils the scaling of all that is smaller, and most often stands for none.
bool isFar(double bound, double tolerance);

/// Takes the far bounds away. What is infeasible without them is infeasible, and what is optimal
/// without them is so when it keeps to them. @return whether there were any.
bool openFarBounds(ExactProblem& problem, double tolerance);

/// Puts back, from `bounded`, the bounds that were opened and that `levels` do not keep to.
/// @param levels  [nbColumns], or empty: all are put back.
/// @return whether there were any.
bool restoreMissedBounds(ExactProblem& problem, const ExactProblem& bounded,
                         const std::vector<double>& levels);

}  // namespace engine
