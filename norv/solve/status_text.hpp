#pragma once

#include <cstdint>
#include <string>

namespace norv {

/// What a status number means, in a few words; "status N" for one that this host does not know.
std::string modelStatusText(std::int32_t status);
std::string solveStatusText(std::int32_t status);

}  // namespace norv
