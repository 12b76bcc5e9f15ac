#pragma once

#include <cstdint>
#include <string>

#include "norv/model.hpp"
#include "solve/box_verdict.hpp"

namespace norv {

/// What norvsolve tells its caller; docs/norvsolve.md repeats the list for users.
enum class ExitCode : std::uint8_t {
    solved = 0,  ///< a solution, optimal or feasible; for clients: the .sol file was written
    badInput = 1,
    infeasible = 2,   ///< proved
    noneFound = 3,    ///< no feasible point within the limits
    failed = 4,       ///< the link cannot be loaded or failed, or the program did
    unsupported = 5,  ///< the model has something that cannot be handled
    failedCheck = 6,  ///< a point was reported feasible and is not
    outputFailed = 7,
    unbounded = 8,
    interrupted = 130,  ///< a second Ctrl+C
};

/// Who ended the search.
enum class StopReason : std::uint8_t {
    none,  ///< the search itself
    user,
    timeLimit,
    iterationLimit,
    wallLimit,
    noImprovement,
};

/// How a run ended: what exit codes, .sol codes and all words about it are made from.
struct Ending {
    enum class Kind : std::uint8_t {
        optimal,
        feasible,    ///< not proved optimal
        infeasible,  ///< proved
        unbounded,   ///< with a point on the way
        noneFound,
        unsupported,
        failedCheck,
        failed,
    };
    Kind kind = Kind::failed;
    StopReason reason = StopReason::none;
    std::string text;  ///< a few words: "time limit, feasible solution"
    /// Of the model file, option file, command line and the like, not of the solve.
    ExitCode complaint = ExitCode::failed;

    [[nodiscard]] bool hasPoint() const {
        return kind <= Kind::feasible || kind == Kind::unbounded || kind == Kind::failedCheck;
    }
    [[nodiscard]] ExitCode exitCode() const;
    /// The code of a .sol file, in the ranges of AMPL's `solve_result`.
    [[nodiscard]] std::int32_t solutionCode() const;
};

/// @param asked  why the host asked the link to stop, if it did.
/// @param refusal  the link's own words about what it does not support.
[[nodiscard]] Ending endingOf(const Model& model, const SolveResult& result, StopReason asked,
                              const std::string& refusal);

/// "time limit", "interrupted"; empty for none.
[[nodiscard]] std::string reasonText(StopReason reason);

}  // namespace norv
