#pragma once

#include "hostapi/codes.hpp"
#include "hostapi/handles.hpp"

/// The host's handles and numbers under the link's own namespace.

namespace vex {

using hostapi::AuditHandle;
using hostapi::DictionaryHandle;
using hostapi::EnvironmentHandle;
using hostapi::ModelHandle;
using hostapi::OptionHandle;

namespace variable_type = hostapi::variable_type;
namespace equation_type = hostapi::equation_type;
namespace function_order = hostapi::function_order;
namespace objective_sense = hostapi::objective_sense;
namespace objective_style = hostapi::objective_style;
namespace model_type = hostapi::model_type;
namespace model_status = hostapi::model_status;
namespace solve_status = hostapi::solve_status;
namespace head_and_tail = hostapi::head_and_tail;
namespace host_setting = hostapi::host_setting;

using hostapi::imposedBound;
using hostapi::longestText;
using hostapi::noIterationLimit;
using hostapi::variableEquationMap;

}  // namespace vex
