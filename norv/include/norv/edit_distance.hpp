#pragma once

#include <cstddef>
#include <string_view>

#include "norv/export.hpp"

namespace norv {

/// The optimal string alignment distance (insertions, deletions, substitutions, swaps of
/// neighbours) between two short names, ignoring case. O(product of their lengths).
[[nodiscard]] NORV_API std::size_t editDistance(std::string_view a, std::string_view b);

}  // namespace norv
