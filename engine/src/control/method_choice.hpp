#pragma once

#include <string>
#include <string_view>

namespace engine {

/// What a method said when it was asked whether it applies.
struct MethodChoice {
    std::string_view name;
    std::string reasonAgainst;  ///< empty: it applies
};

}  // namespace engine
