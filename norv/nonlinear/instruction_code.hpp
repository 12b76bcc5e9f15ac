#pragma once

#include "hostapi/instruction_code.hpp"

/// The instruction code under the host's own namespace.

namespace norv {

using enum hostapi::Opcode;
using hostapi::Action;
using hostapi::Function;
using hostapi::functionTable;
using hostapi::FunctionTraits;
using hostapi::isFunction;
using hostapi::isOpcode;
using hostapi::nbConsumed;
using hostapi::Opcode;
using hostapi::opcodeTable;
using hostapi::OpcodeTraits;
using hostapi::Operand;
using hostapi::traitsOf;

}  // namespace norv
