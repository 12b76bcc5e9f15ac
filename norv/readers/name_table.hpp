#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace norv {

/// Names and their indices, in order of insertion. The characters stay where they are: the table
/// keeps views, so the text outlives it. Open addressing with linear probing, at most half full;
/// a slot holds a part of the hash, so that a comparison of characters is almost always a hit.
class NameTable {
public:
    static constexpr std::int32_t absent = -1;

    struct Insertion {
        std::int32_t index;
        bool isNew;
    };

    /// Index of `name`, which is added as the last one when it is new.
    Insertion insert(std::string_view name);

    /// Index of `name`, or `absent`.
    [[nodiscard]] std::int32_t find(std::string_view name) const;

    [[nodiscard]] std::int32_t size() const { return static_cast<std::int32_t>(names_.size()); }
    [[nodiscard]] std::string_view operator[](std::int32_t index) const {
        return names_[static_cast<std::size_t>(index)];
    }

private:
    struct Slot {
        std::uint32_t mark;  ///< upper half of the hash
        std::int32_t index;  ///< absent: the slot is free
    };

    [[nodiscard]] std::size_t findSlot(std::string_view name, std::uint64_t hash) const;
    void grow();

    std::vector<std::string_view> names_;
    std::vector<Slot> slots_;  ///< a power of two, never full
};

}  // namespace norv
