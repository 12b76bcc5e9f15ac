#pragma once

namespace norv {

/// What norvsolve tells its caller; docs/norvsolve.md repeats the list for users.
enum class ExitCode {
    reported = 0,       ///< the link ran and reported statuses, whatever they say
    internalError = 1,  ///< an error that no other code names, such as exhausted memory
    badCommandLine = 2,
    badInput = 3,      ///< model or option file unreadable or malformed
    noLink = 4,        ///< the link cannot be loaded, or refuses this host
    linkFailed = 5,    ///< the link ran and failed
    failedCheck = 6,   ///< a point was reported feasible and is not
    outputFailed = 7,  ///< a result could not be written
};

}  // namespace norv
