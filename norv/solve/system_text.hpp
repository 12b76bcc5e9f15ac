#pragma once

#include <string>

namespace norv {

/// Of the process's environment; empty when there is none. UTF-8 on Windows, as it stands
/// elsewhere.
std::string environmentVariable(const char* name);

}  // namespace norv
