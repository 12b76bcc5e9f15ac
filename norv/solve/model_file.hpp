#pragma once

#include <ostream>
#include <string>

#include "norv/environment.hpp"
#include "norv/model.hpp"
#include "readers/input_text.hpp"

namespace norv {

/// Reads an .mps or .nl file, which its content tells apart, and builds the host's model of it.
/// @param environment     outlives the model.
/// @param isSquareSystem  state the model type "square system"; Failure (badInput) unless the
///                        model has as many equations as variables, no other rows and no objective.
/// @param log             receives warnings and one line about the model's size.
/// Throws ReadError for a file with faults.
Model readModel(const InputText& file, const Environment& environment, bool isSquareSystem,
                std::ostream& log);

}  // namespace norv
