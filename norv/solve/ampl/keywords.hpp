#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "solve/solve_run.hpp"

namespace norv {

/// What an AMPL client sets by keywords: a few of its usual ones, and the link's options.
struct AmplSettings {
    SolveSettings solve;
    std::int32_t logLevel = 0;  ///< 0: nothing but complaints; 1: the log and the summary too
    std::int32_t wanted = 0;    ///< sum of `wanted_solution` bits
};

/// What is printed of the solution, AMPL's own numbers. Its bits 1 and 4 ask for the .sol file,
/// which is always written, and for dual values, of which there are none.
namespace wanted_solution {
constexpr std::int32_t levels = 2;
constexpr std::int32_t silence = 8;  ///< no message
constexpr std::int32_t all = 15;
}  // namespace wanted_solution

/// Takes assignments as they stand in the client's variable: "key=value", "key value" or
/// "key = value", separated by blanks; a value with blanks in single or double quotes, where a
/// doubled quote stands for one.
/// @param source  stands in front of complaints.
/// Failure (badCommandLine) for a value that is missing or refused, naming the keyword. Whether the
/// link has an option of that name is found out when its options are made.
void takeKeywords(AmplSettings& settings, std::string_view text, const std::string& source);

/// One text for `takeKeywords` of the words of a command line: "key=value" keeps blanks and quotes
/// of its value.
[[nodiscard]] std::string joinedKeywords(const std::vector<std::string>& words);

/// All keywords with what they take and a line of explanation, in the order of the alphabet.
/// Failure (badInput) when the option definitions cannot be read.
void listKeywords(std::ostream& out);

}  // namespace norv
