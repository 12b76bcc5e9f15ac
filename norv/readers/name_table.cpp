#include "readers/name_table.hpp"

#include <cstring>

namespace norv {
namespace {

constexpr std::uint64_t multiplier = 0x9e3779b97f4a7c15U;  // 2^64 divided by the golden ratio

std::uint64_t mix(std::uint64_t hash, std::uint64_t word) {
    hash = (hash ^ word) * multiplier;
    return hash ^ (hash >> 32U);
}

/// Multiplicative hashing, eight bytes at a time (Knuth, The Art of Computer Programming 3, 6.4).
std::uint64_t hashOf(std::string_view name) {
    std::uint64_t hash = name.size();
    while (name.size() >= 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, name.data(), 8);
        hash = mix(hash, word);
        name.remove_prefix(8);
    }
    std::uint64_t tail = 0;
    if (!name.empty()) std::memcpy(&tail, name.data(), name.size());
    return mix(hash, tail);
}

std::uint32_t markOf(std::uint64_t hash) {
    return static_cast<std::uint32_t>(hash >> 32U);
}

}  // namespace

std::size_t NameTable::findSlot(std::string_view name, std::uint64_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = hash & mask;
    while (slots_[slot].index != absent &&
           (slots_[slot].mark != markOf(hash) || (*this)[slots_[slot].index] != name)) {
        slot = (slot + 1) & mask;
    }
    return slot;
}

std::int32_t NameTable::find(std::string_view name) const {
    return slots_.empty() ? absent : slots_[findSlot(name, hashOf(name))].index;
}

NameTable::Insertion NameTable::insert(std::string_view name) {
    if (2 * names_.size() >= slots_.size()) grow();
    const std::uint64_t hash = hashOf(name);
    Slot& slot = slots_[findSlot(name, hash)];
    if (slot.index != absent) return {slot.index, false};
    slot = {markOf(hash), size()};
    names_.push_back(name);
    return {slot.index, true};
}

void NameTable::grow() {
    const std::size_t nbSlots = slots_.empty() ? 64 : 2 * slots_.size();
    slots_.assign(nbSlots, Slot{0, absent});
    for (std::int32_t index = 0; index < size(); ++index) {
        const std::uint64_t hash = hashOf((*this)[index]);
        slots_[findSlot((*this)[index], hash)] = {markOf(hash), index};
    }
}

}  // namespace norv
