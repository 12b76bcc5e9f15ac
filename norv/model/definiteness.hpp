#pragma once

#include <cstdint>
#include <span>

namespace norv {

/// A term of a quadratic form: value * first * second.
struct FormTerm {
    std::int32_t first;
    std::int32_t second;
    double value;
};

/// Is the form certainly 0 or more everywhere? "No" says nothing: the form may be too large to
/// tell, or rounding may hide the answer.
///
/// Factorizes L D L' within the envelope, variables in the order of their indices. A form is
/// accepted when that succeeds for A - cI, where c bounds all that rounding may do (S. M. Rump,
/// "Verification of positive definiteness", BIT 46, 2006), or, as singular forms need it, for A
/// itself without a single rounding.
/// @param terms  no pair twice, each value finite and not 0.
[[nodiscard]] bool isSurelySemidefinite(std::span<const FormTerm> terms);

}  // namespace norv
