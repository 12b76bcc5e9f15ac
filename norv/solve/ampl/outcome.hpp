#pragma once

#include <cstdint>
#include <string>

#include "norv/model.hpp"
#include "solve/box_verdict.hpp"
#include "solve/failure.hpp"

namespace norv {

/// How a solve ended, in AMPL's terms.
///
/// The code's range tells the client's `solve_result`: 0 solved, 100 solved?, 200 infeasible, 300
/// unbounded, 400 limit, 500 failure; docs/norvsolve.md lists the codes.
struct AmplOutcome {
    std::int32_t code = 0;
    std::string text;               ///< a few words
    bool hasPoint = false;          ///< the model's levels are worth reading
    bool hasStatistics = true;      ///< the model has iterations and seconds
    bool isExplainedByLog = false;  ///< the link's own words tell more
};

[[nodiscard]] AmplOutcome outcomeOf(const Model& model, const SolveResult& result);

/// Of a solve that ended with a complaint instead of statuses.
[[nodiscard]] AmplOutcome outcomeOf(const Complaint& complaint);

}  // namespace norv
