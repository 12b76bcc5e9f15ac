#include "readers/name_index.hpp"

namespace norv {
namespace {

constexpr std::uint64_t multiplier = 0x9e3779b97f4a7c15U;  // 2^64 divided by the golden ratio
constexpr std::size_t wordLength = 8;

/// Multiplicative hashing (Knuth, The Art of Computer Programming 3, 6.4).
std::uint64_t mix(std::uint64_t word) {
    word *= multiplier;
    return word ^ (word >> 32U);
}

/// The first bytes of `text`, at most 8, as a number.
std::uint64_t wordAt(std::string_view text) {
    std::uint64_t word = 0;
    for (const char byte : text.substr(0, wordLength)) {
        word = (word << 8U) | static_cast<unsigned char>(byte);
    }
    return word;
}

}  // namespace

NameIndex::Key NameIndex::keyOf(std::string_view name) {
    const auto length = static_cast<std::uint32_t>(name.size());
    std::uint64_t word = wordAt(name);
    while (name.size() > wordLength) {
        name.remove_prefix(wordLength);
        word = mix(word) ^ wordAt(name);
    }
    return {word, length};
}

std::size_t NameIndex::homeSlot(Key key) const {
    return mix(key.word ^ key.length) & (slots_.size() - 1);
}

void NameIndex::prefetch(std::string_view name) const {
    if (!slots_.empty()) __builtin_prefetch(&slots_[homeSlot(keyOf(name))]);
}

std::size_t NameIndex::findSlot(std::string_view name, Key key) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = homeSlot(key);
    while (slots_[slot].index != absent &&
           (slots_[slot].key() != key ||
            (name.size() > wordLength && (*this)[slots_[slot].index] != name))) {
        slot = (slot + 1) & mask;
    }
    return slot;
}

std::int32_t NameIndex::find(std::string_view name) const {
    return slots_.empty() ? absent : slots_[findSlot(name, keyOf(name))].index;
}

NameIndex::Insertion NameIndex::insert(std::string_view name) {
    if (2 * names_.size() >= slots_.size()) grow();
    const Key key = keyOf(name);
    Slot& slot = slots_[findSlot(name, key)];
    if (slot.index != absent) return {slot.index, false};
    slot = {key.word, key.length, size()};
    names_.push_back(name);
    return {slot.index, true};
}

void NameIndex::grow() {
    const std::size_t nbSlots = slots_.empty() ? 64 : 2 * slots_.size();
    slots_.assign(nbSlots, Slot{0, 0, absent});
    for (std::int32_t index = 0; index < size(); ++index) {
        const Key key = keyOf((*this)[index]);
        slots_[findSlot((*this)[index], key)] = {key.word, key.length, index};
    }
}

}  // namespace norv
