#pragma once

#include <chrono>
#include <iosfwd>
#include <optional>
#include <string>

#include "norv/environment.hpp"
#include "norv/options.hpp"
#include "solve/box_verdict.hpp"
#include "solve/ends.hpp"
#include "solve/improving_points.hpp"
#include "solve/model_file.hpp"
#include "solve/search_watch.hpp"
#include "solve/settings/settings.hpp"

namespace norv {

/// "name=value" as an assignment takes it, whatever is in the value.
[[nodiscard]] std::string assignmentText(const std::string& name, const std::string& value);

/// Limits, threads and directory, as the settings want them; the time limit is rounded up to whole
/// seconds.
/// @param log  is told when that changes it.
/// Failure (badInput) instead, where warnings are errors.
void configure(Environment& environment, const Settings& settings, std::ostream& log);

/// The options for the link: those of the option file, then the assignments. Nothing when there are
/// no assignments and nobody insists: the link then reads the option file.
/// @param always  insist: the caller has options of its own to set.
/// @param log  receives what the option library says about the option file.
/// Failure (badInput) when the option file cannot be read, for a refused assignment, with the
/// option library's reason, and for any message about the file where warnings are errors.
[[nodiscard]] std::optional<Options> makeOptions(const Settings& settings, bool always,
                                                 std::ostream& log);

/// Loads the link and has it solve the model, or what stands in for it. The user's model has levels
/// and statuses afterwards.
/// @param options  as made by `makeOptions` from the same settings.
/// @param points  gets the best point so far from the link while it solves; may be null.
void solve(LoadedModel& loaded, const SolveSettings& settings,
           const std::optional<Options>& options, ImprovingPoints* points);

/// Checks the point that the link claims, against the user's model.
[[nodiscard]] SolveResult checkResult(const LoadedModel& loaded, const SolveSettings& settings,
                                      const std::optional<Options>& options);

}  // namespace norv
