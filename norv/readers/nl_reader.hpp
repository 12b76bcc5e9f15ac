#pragma once

#include "readers/input_text.hpp"
#include "readers/nl_instance.hpp"

namespace norv {

/// Does the file begin like an .nl file, "g" or "b" and a digit?
[[nodiscard]] bool looksLikeNl(std::string_view content) noexcept;

/// Reads an .nl file, text or binary in either byte order; docs/instance-formats.md tells what is
/// understood and how.
/// @param objective  the number of the one that counts, from 1; 0: none does.
/// @param nbValueVariables  0: piecewise-linear terms become functions of their arguments. Else how
/// many of them the file has (`NlInstance::piecewise`): they become variables.
/// Throws ReadError at the first fault, UnsupportedError for an operator or function that this host
/// does not have, unless only objectives that do not count use it.
NlInstance readNl(const InputText& file, NlNames names = {}, std::int32_t objective = 1,
                  std::int32_t nbValueVariables = 0);

/// The names beside `path`: for "dir/model.nl" (or "dir/model.nl.gz") those in "dir/model.row" and
/// "dir/model.col", one a line. A file that is not there gives no names.
NlNames readNlNames(const std::string& path);

}  // namespace norv
