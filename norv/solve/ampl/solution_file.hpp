#pragma once

#include <cstdint>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "readers/nl_header.hpp"

namespace norv {

/// The suffix of rows that carries their values.
constexpr std::string_view activitySuffix = "activity";

/// What an AMPL client reads back from "stub.sol".
struct AmplSolution {
    std::string message;             ///< lines, without the last line's end
    std::int32_t code = 0;           ///< how the solve ended, see Ending
    std::span<const double> levels;  ///< [nbVariables of the model], in its order; or empty: none
    std::vector<double> activities;  ///< [nbRows] as the suffix "activity" of the rows; or empty
};

/// Writes a .sol file as the client of the .nl file with this header expects it: text for a text,
/// binary in the same byte order for a binary file. There are no dual values.
///
/// The layout is that of D. M. Gay, "Hooking Your Solver to AMPL" (1997), section "Returning
/// results", and of the AMPL solver library. Errors show in the state of `out`.
/// @param out  opened for bytes, without translation of line ends.
void writeAmplSolution(std::ostream& out, const NlHeader& header, const AmplSolution& solution);

}  // namespace norv
