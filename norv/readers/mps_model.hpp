#pragma once

#include "norv/model_builder.hpp"
#include "readers/mps_instance.hpp"

namespace norv {

/// Hands an instance to the host: rows and columns in file order, the objective as a function.
///
/// Ranges become two rows (see `ModelBuilder::setRange`), free rows other than the objective stay
/// free rows. An integer column held between 0 and 1 is handed over as a binary one.
/// @param builder  empty.
void buildModel(const MpsInstance& instance, ModelBuilder& builder);

}  // namespace norv
