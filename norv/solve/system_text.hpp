#pragma once

#include <istream>
#include <string>

namespace norv {

/// The value of a variable of the environment, UTF-8 on Windows; empty without one.
std::string environmentVariable(const char* name);

/// The standard input, with its bytes as they are.
std::istream& binaryStandardInput();

}  // namespace norv
