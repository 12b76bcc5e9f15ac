#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hostapi/codes.hpp"

namespace norv {

/// A condition beside the rows of a model (ModelBuilder::addSpecialOrderedSet).
///
/// Of its members at most one (type 1), or two that are neighbours (type 2), may differ from 0.
struct SpecialOrderedSet {
    std::int32_t type = 0;  ///< hostapi::variable_type, specialOrdered1 or specialOrdered2
    std::string name;       ///< for messages; need not be unique
    std::vector<std::int32_t> members;  ///< in the set's order, none twice

    /// The 1 or 2 that users call the type.
    [[nodiscard]] std::int32_t nbNonzeros() const noexcept {
        return type == hostapi::variable_type::specialOrdered1 ? 1 : 2;
    }
    /// Can any point break it? Two members are neighbours always.
    [[nodiscard]] bool restricts() const noexcept {
        return members.size() > static_cast<std::size_t>(nbNonzeros());
    }
};

}  // namespace norv
