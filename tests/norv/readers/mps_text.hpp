#pragma once

#include <string>

#include "readers/mps_instance.hpp"

namespace norv::test {

/// The instance in one line of algebra, "min 3 + 2 x - y | c: 1 <= x + y <= 4 | 0 <= x <= inf int",
/// rows and columns in file order, quadratic terms after the linear ones, sets at the end.
std::string describe(const MpsInstance& instance);

/// A small instance around the lines under test: rows cost (N), c1 (L), c2 (G), c3 (E), columns x
/// and y that stand in cost and c1 with coefficient 1, then `sections` and ENDATA.
std::string around(const std::string& sections);

}  // namespace norv::test
