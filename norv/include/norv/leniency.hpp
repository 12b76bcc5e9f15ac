#pragma once

#include <optional>

namespace norv {

/// A relation inside a function whose sides are so close that the tolerance decides.
struct LooseRelation {
    double left;
    const char* sign;  ///< "<", "<=", "=", ">=", ">" or "<>"
    double right;
};

/// How an evaluation is to take the relations inside a function, and what that changed.
struct Leniency {
    double tolerance;                    ///< absolute, and relative to the larger side
    std::optional<LooseRelation> first;  ///< set by the evaluation: holds, or fails, by that alone
};

}  // namespace norv
