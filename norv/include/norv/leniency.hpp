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
///
/// The host is exact: 2.9999999 >= 3 is false. An optimizer with a tolerance takes it for true, and
/// a row that holds by that alone is not the optimizer's mistake. One object an evaluation.
struct Leniency {
    double tolerance;                    ///< absolute, and relative to the larger side
    std::optional<LooseRelation> first;  ///< set by the evaluation: holds, or fails, by that alone
};

}  // namespace norv
