#pragma once

#include "localsolver.hpp"

namespace vex {

/// Is there an expression behind the handle? A default handle (index -1) stands for none: a
/// variable that nothing has used yet, an operand that is missing.
[[nodiscard]] inline bool isBuilt(localsolver::LSExpression e) {
    return e.getIndex() >= 0;
}

}  // namespace vex
