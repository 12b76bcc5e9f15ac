#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "localsolver.h"

/// Everything outside the entry points, scripted: the host's libraries, the translator's setup, the
/// solve driver and the optimizer. Every call is recorded as a line of text.
///
/// The host's operations that are not scripted do not exist: calling one ends the process.

namespace vex::test {

using Messages = std::vector<std::pair<std::int32_t, std::string>>;  // type, text

/// What the outside answers, and what was asked of it.
struct World {
    bool auditObject = true;  ///< whether the create entries succeed
    bool optionObject = true;
    std::string systemDirectory = "/sys/";
    std::int32_t definitionFailure = 0;
    Messages definitionMessages;  ///< pending once the definition file is read
    std::int32_t optionFile = 0;
    Messages optionFileMessages;  ///< pending once the option file is read
    std::int32_t aggrvars = 0;
    std::vector<std::function<void()>> setups;  ///< what each setupModel does; then: nothing
    std::function<std::int32_t()> drive = [] { return 0; };
    std::string creationError;  ///< reported by ls_create_solver, code 8; empty: none

    std::vector<std::string> calls;  ///< "operation: arguments", in order
    Messages pending;
    ls_exception_callback hook = nullptr;
    std::size_t nbSetups = 0;
};
extern World world;

/// Binds the host's libraries to the script; for good, but `world` may change afterwards.
void bindHub();
void bindOptions();

}  // namespace vex::test
