#pragma once

#include "global/factorable_model.hpp"

namespace engine {

/// The largest step of which all values of `form` that differ are multiples apart, when all its
/// columns are integral at integral points; otherwise 0.
double stepOf(const FactorableModel& factorable, const LinearForm& form);

}  // namespace engine
