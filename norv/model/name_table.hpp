#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "model/array.hpp"

namespace norv {

/// Names of rows or variables in one piece of text; an empty one is generated on demand.
class NameTable {
public:
    /// @param prefix  of generated names: the prefix, then the position counted from 1.
    explicit NameTable(char prefixOfGenerated) : prefix_(prefixOfGenerated) {}

    void add(std::string_view name);
    [[nodiscard]] std::size_t size() const noexcept { return ends_.size(); }

    /// As it was given, maybe empty; valid until the next `add`.
    [[nodiscard]] std::string_view given(std::int32_t k) const;
    [[nodiscard]] std::string nameOf(std::int32_t k) const;

private:
    char prefix_;
    std::string text_;
    Array<std::size_t> ends_;  ///< of each name in `text`
};

}  // namespace norv
