#include <cstdlib>
#include <iostream>

#include "solve/system_text.hpp"

namespace norv {

std::string environmentVariable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::istream& binaryStandardInput() {
    return std::cin;
}

}  // namespace norv
