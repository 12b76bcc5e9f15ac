#pragma once

#include "readers/input_text.hpp"
#include "readers/mps_instance.hpp"

namespace norv {

/// Reads an .mps file, fixed or free, with its quadratic, semi-continuous and special-ordered-set
/// sections; docs/instance-formats.md tells what is understood and how.
///
/// @param text  outlives the result, which refers to its names.
/// Throws ReadError at the first fault.
MpsInstance readMps(const InputText& text, const MpsSettings& settings = {});

}  // namespace norv
