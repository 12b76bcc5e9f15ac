#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "norv/model_builder.hpp"
#include "readers/input_text.hpp"

namespace norv {

/// Does the file begin like an .lp file, with the word for an objective's sense?
[[nodiscard]] bool looksLikeLp(std::string_view content);

/// Reads an .lp file in the dialect that most programs share, and hands it to the host:
/// objective, rows (also ranges "1 <= x + y <= 4"), bounds, general, binary and semi-continuous
/// variables, special ordered sets, quadratic terms in brackets, in the objective halved by "/ 2".
/// docs/instance-formats.md tells what is understood and how.
/// @param builder  empty.
/// @return warnings: what was read but not taken as it stands, "file:line:column: ...".
/// Throws ReadError at the first fault.
std::vector<std::string> readLp(const InputText& file, ModelBuilder& builder);

}  // namespace norv
