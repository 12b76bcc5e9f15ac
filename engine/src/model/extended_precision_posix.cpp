#include "model/extended_precision.hpp"

namespace engine {

ExtendedPrecision::ExtendedPrecision() = default;
ExtendedPrecision::~ExtendedPrecision() = default;

}  // namespace engine
