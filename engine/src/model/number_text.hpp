#pragma once

#include <string>

#include "model/value.hpp"

namespace engine {

/// The shortest text from which the number reads back exactly, whatever the locale; an infinity is
/// "inf" or "-inf", NaN is "nan".
std::string numberText(Value value);

}  // namespace engine
