#pragma once

#include <vector>

#include "global/factorable_model.hpp"

namespace engine {

/// A binary column that fixes another one: where `binary` is `off` the other column is `value`.
struct Switch {
    std::int32_t binary = noColumn;
    double off = 0.0;    ///< 0 or 1
    double value = 0.0;  ///< of the other column when the binary is off
};

/// For each column a switch that rows of the model make, or one without binary.
std::vector<Switch> switchesOf(const LinearModel& model);

}  // namespace engine
