#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace vex {

/// Ordered map from expression index to the value of the constant with that index.
///
/// Expressions are numbered in the order of creation, so a constant that is registered when it is
/// made has the largest index so far: a sorted array takes it at its end without an allocation of
/// its own, where a tree would allocate a node per row. `set` in any other order stays correct
/// and costs O(size).
template <class Value>
class ConstantRegistry {
public:
    /// Sets the value of `index`, over one that was set before. Amortised O(1) at the end.
    void set(std::int32_t index, Value value) {
        if (entries_.empty() || entries_.back().first < index) {
            entries_.emplace_back(index, value);
            return;
        }
        const auto position = lowerBound(index);
        if (position->first == index)
            entries_[static_cast<std::size_t>(position - entries_.begin())].second = value;
        else
            entries_.insert(position, {index, value});
    }

    /// @return the value of `index`, null when there is none; valid until the next change.
    [[nodiscard]] const Value* find(std::int32_t index) const {
        const auto position = lowerBound(index);
        return position == entries_.end() || position->first != index ? nullptr : &position->second;
    }

    /// Forgets every entry; keeps the room.
    void clear() { entries_.clear(); }
    [[nodiscard]] bool empty() const { return entries_.empty(); }

private:
    using Entry = std::pair<std::int32_t, Value>;

    [[nodiscard]] typename std::vector<Entry>::const_iterator lowerBound(std::int32_t index) const {
        return std::lower_bound(entries_.begin(), entries_.end(), index,
                                [](const Entry& e, std::int32_t i) { return e.first < i; });
    }

    std::vector<Entry> entries_;  // sorted by index, no duplicates
};

}  // namespace vex
