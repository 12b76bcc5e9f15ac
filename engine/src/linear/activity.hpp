#pragma once

#include "linear/linear_model.hpp"
#include "operators/range.hpp"

namespace engine {

/// All values of `form` within the bounds of the model's columns, rounded outward. O(terms).
Range activityOf(const LinearForm& form, const LinearModel& model);

}  // namespace engine
