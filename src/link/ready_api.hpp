#pragma once

#include <cstdint>

#include "host/codes.hpp"
#include "translate/nlocalsolver.hpp"

namespace vex {

/// Prepares `link` for the solve: binds the host's libraries, writes the banner, reads the options,
/// creates the LocalSolver instance and builds the model.
///
/// May be called again on the same object: it keeps its option object and builds the model afresh.
/// @param model    the instance; the host's, must outlive the link object or its next preparation.
/// @param options  adopted, stays the host's; null: the link makes and owns one.
/// @return 0 when the model is closed, and when the instance was refused with statuses set; else 1,
///         and `link` may still hold the model of an earlier call.
/// Reports through the host's log, binding failures on the standard error stream. Throws whatever
/// is no LSException; the entry point's guard takes it from there.
[[nodiscard]] std::int32_t readyAPI(NorvLocalSolver& link, ModelHandle model, OptionHandle options);

}  // namespace vex
