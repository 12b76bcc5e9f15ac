#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "localsolver.h"

/// Everything outside the entry points, scripted: the host's libraries, the translator's setup, the
/// solve driver and the optimizer. Every call that does something is recorded as a line of text.

namespace vex::test {

using Messages = std::vector<std::pair<std::int32_t, std::string>>;  // type, text

/// What the outside answers, and what was asked of it.
struct World {
    std::map<std::string, std::int32_t> numbers;  ///< by operation; others answer 0
    std::map<std::string, std::string> texts = {{"nevGetStrOpt", "/sys/"},
                                                {"nmoNameOptFile", "localsolver.opt"},
                                                {"huxGetAuditLine", "audit line"}};
    std::map<std::string, Messages> messages;  ///< pending once the operation was called
    bool auditObject = true;                   ///< whether the create entries succeed
    bool optionObject = true;
    std::vector<std::function<void()>> setups;  ///< what each setupModel does; then: nothing
    std::function<std::int32_t()> drive = [] { return 0; };
    std::string creationError;  ///< reported by ls_create_solver, code 8; empty: none

    std::vector<std::string> calls;  ///< "operation: arguments", in order
    Messages pending;
    std::size_t nbSetups = 0;
    ls_exception_callback hook = nullptr;
};
extern World world;

/// Binds the host's libraries to the script; for good, but `world` may change afterwards.
void bindHub();
void bindOptions();

}  // namespace vex::test
