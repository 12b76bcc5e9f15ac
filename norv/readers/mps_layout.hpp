#pragma once

#include <string_view>

#include "readers/mps_lines.hpp"

namespace norv {

struct MpsLayoutFinding {
    MpsLayout layout;
    /// The first line that leaves the fixed columns, from 1; 0 when every line keeps to them.
    std::size_t firstFreeLine;
};

/// Decides how the data lines of an .mps text are to be cut.
///
/// The fixed columns and blanks give the same fields unless a name contains a blank. So the text is
/// cut at the columns only when every data line of every section keeps to them and some name has a
/// blank inside; it is cut at blanks otherwise. Keeping to the columns means: nothing but blanks
/// between the fields and after the last, no tabs, names starting in the first column of their
/// field, numbers in one piece, and as many fields as the section asks for. Stops at the first line
/// that does not, so that free files cost next to nothing.
MpsLayoutFinding recogniseMpsLayout(std::string_view text);

}  // namespace norv
