#pragma once

#include "hostapi/instruction_code.hpp"

/// The host's instruction code under the link's own namespace.

namespace vex {

using hostapi::Function;
using hostapi::functionTable;
using hostapi::FunctionTraits;
using hostapi::isFunction;
using hostapi::isOpcode;
using hostapi::Opcode;
using hostapi::traitsOf;

}  // namespace vex
