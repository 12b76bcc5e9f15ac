#pragma once

#include "hostapi/type_codes.hpp"

/// The host's type codes and the signatures derived from function types, for the link's own use.

namespace vex {

using hostapi::Signature;

}  // namespace vex
