#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace norv {

/// Names and their indices, in order of insertion. The characters stay where they are: the table
/// keeps views, so the text outlives it. Open addressing with linear probing, at most half full.
/// A slot holds a name of up to 8 bytes whole, so that looking one up touches nothing but its slot.
class NameIndex {
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

    /// Fetches the slot of `name` ahead of `find`, which would otherwise wait for the memory.
    void prefetch(std::string_view name) const;

    [[nodiscard]] std::int32_t size() const { return static_cast<std::int32_t>(names_.size()); }
    [[nodiscard]] std::string_view operator[](std::int32_t index) const {
        return names_[static_cast<std::size_t>(index)];
    }

private:
    /// What is compared in a slot: the bytes of a short name, the hash of a long one.
    struct Key {
        std::uint64_t word;
        std::uint32_t length;
        bool operator==(const Key&) const = default;
    };

    struct Slot {
        std::uint64_t word;
        std::uint32_t length;
        std::int32_t index;  ///< absent: the slot is free

        [[nodiscard]] Key key() const { return {word, length}; }
    };

    static Key keyOf(std::string_view name);
    [[nodiscard]] std::size_t homeSlot(Key key) const;
    [[nodiscard]] std::size_t findSlot(std::string_view name, Key key) const;
    void grow();

    std::vector<std::string_view> names_;
    std::vector<Slot> slots_;  ///< a power of two, never full
};

}  // namespace norv
