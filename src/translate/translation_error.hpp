#pragma once

#include <string>

#include "localsolver.hpp"

namespace vex {

/// The link's own error: code 2, which stands for an instance that the link cannot handle.
/// @param line      of the throw, `__LINE__`.
/// @param function  qualified name of the throwing method.
inline localsolver::LSException translationError(int line, const char* function,
                                                 std::string explanation) {
    return {LS_ERROR_CALLER, "nlocalsolver", line, function, std::move(explanation)};
}

}  // namespace vex
