#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "nonlinear/expression.hpp"

namespace norv {

/// An operator of .nl files, "o5" and the like.
struct NlOperator {
    static constexpr std::int32_t list = -1;       ///< the count of operands follows
    static constexpr std::int32_t piecewise = -2;  ///< the count of pieces follows

    std::int32_t code;
    std::string_view name;
    std::int32_t nbOperands;  ///< or one of the above
};

/// Null for a number that is no operator.
const NlOperator* findNlOperator(std::int32_t code) noexcept;

/// `code` applied to `operands` in the host's own operations.
///
/// The rest of a division, by truncation, is exact for integers below 2^53. Hyperbolic functions
/// are written with exp, tanh without overflow, and their inverses with log and sqrt.
/// @param operands  as many as the operator has; at least one for lists other than sums.
/// @return noNode when the host has no operation for it.
NodeIndex makeNlOperation(ExpressionStore& store, std::int32_t code,
                          std::span<const NodeIndex> operands);

}  // namespace norv
