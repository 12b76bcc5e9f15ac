#pragma once

#include <cstdint>

#include "localsolver.hpp"
#include "translate/nlocalsolver.hpp"

namespace vex {

/// Model status, then solve status.
void setStatuses(const NorvLocalSolver& link, std::int32_t modelStatus, std::int32_t solveStatus);

/// Writes `error` to the log and the status file and sets the statuses that it stands for: the
/// link's own errors mean that the instance cannot be handled, the optimizer's that it went wrong.
/// @return the result of the entry point: 0 for the link's own errors, else 1.
[[nodiscard]] std::int32_t reportError(const NorvLocalSolver& link,
                                       const localsolver::LSException& error);

}  // namespace vex
