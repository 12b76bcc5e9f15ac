#pragma once

#include <memory>

#include "methods/method.hpp"

namespace engine {

/// Branch and bound over boxes with linear relaxations, for any model with one objective or none
/// that is not linear; see searchBoxes.
std::unique_ptr<Method> makeSpatial(Ground& ground);

}  // namespace engine
