#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "norv/environment.hpp"
#include "norv/model.hpp"
#include "solve/settings/settings.hpp"

namespace norv {

/// Rows and bounds that cannot hold together. All of them are needed when `isMinimal`: the search
/// for a smaller set came to its end.
struct Conflict {
    struct Bound {
        std::int32_t variable;
        bool isUpper;
    };
    std::vector<std::int32_t> rows;
    std::vector<Bound> bounds;  ///< of the variables in those rows
    bool isMinimal = false;
};

/// Looks for a small infeasible part of a model that was proved infeasible, by the deletion filter
/// of J. W. Chinneck and E. W. Dravnieks, "Locating minimal infeasible constraint sets in linear
/// programs" (1991): leaves rows out, many at once at first, then bounds, and keeps out what the
/// rest is infeasible without. The link itself is asked, one second each time.
/// @param budget  after that time what there is then is returned.
/// @return nothing for models with instructions or special ordered sets, and when the link does not
/// prove it again without the objective.
/// Throws Failure when the link fails.
[[nodiscard]] std::optional<Conflict> findConflict(const Model& model,
                                                   const SolveSettings& settings,
                                                   std::chrono::duration<double> budget);

/// "row a, row b, x >= 3": at most 20.
[[nodiscard]] std::string conflictText(const Model& model, const Conflict& conflict);

/// The conflicting part as a model of its own.
[[nodiscard]] Model conflictModel(const Model& model, const Conflict& conflict,
                                  const Environment& environment);

}  // namespace norv
