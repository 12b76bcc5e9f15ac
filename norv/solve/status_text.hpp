#pragma once

#include <cstdint>
#include <string>

namespace norv {

/// What a status number means, in a few words; "status N" for one that this host does not know.
std::string modelStatusText(std::int32_t status);
std::string solveStatusText(std::int32_t status);

/// "=", "<=", ">=", "free", "true" for a row that is to hold.
const char* rowTypeText(std::int32_t type);

}  // namespace norv
