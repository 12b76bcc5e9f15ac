#pragma once

#include "host/binding.hpp"

/// The four host interfaces, made from the operation tables, and their process-wide bindings.

namespace vex {

extern const HostInterface huxInterface;  ///< audit library
extern const HostInterface nevInterface;  ///< environment
extern const HostInterface nmoInterface;  ///< model object
extern const HostInterface optInterface;  ///< option object

extern Binding huxBinding;
extern Binding nevBinding;
extern Binding nmoBinding;
extern Binding optBinding;

}  // namespace vex
