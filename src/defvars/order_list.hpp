#pragma once

#include <cstdint>
#include <vector>

namespace vex {

/// Variables in a row, with an answer in O(1) to which of two comes first.
///
/// A linked list whose members carry ascending numbers. Where two neighbours leave no number free,
/// the numbers of the smallest sparse enough surroundings are spread anew: O(log n) amortised for
/// every placement (Bender, Cole, Demaine, Farach-Colton and Zito, "Two simplified algorithms for
/// maintaining order in a list", ESA 2002, section 2).
class OrderList {
public:
    explicit OrderList(std::int32_t nbVariables);

    /// Places variable `v`, which is not in the list, behind all others.
    void placeLast(std::int32_t v) { placeBetween(last, v, none); }
    /// Places `v`, which is not in the list, directly in front of (behind) member `at`.
    void placeBefore(std::int32_t v, std::int32_t at) { placeBetween(before[index(at)], v, at); }
    void placeAfter(std::int32_t v, std::int32_t at) { placeBetween(at, v, after[index(at)]); }
    void remove(std::int32_t v);

    /// Is member `u` in front of member `v`? Variables that were never placed are all equal.
    [[nodiscard]] bool isBefore(std::int32_t u, std::int32_t v) const {
        return numbers[index(u)] < numbers[index(v)];
    }

private:
    static constexpr std::int32_t none = -1;

    static std::size_t index(std::int32_t v) { return static_cast<std::size_t>(v); }
    [[nodiscard]] std::uint64_t room(std::int32_t left, std::int32_t right) const;
    void placeBetween(std::int32_t left, std::int32_t v, std::int32_t right);
    void spreadAround(std::int32_t v);

    std::vector<std::uint64_t>
        numbers;                       ///< [nbVariables] ascending along the list; 0: never placed
    std::vector<std::int32_t> before;  ///< [nbVariables] neighbour or none
    std::vector<std::int32_t> after;   ///< [nbVariables] neighbour or none
    std::int32_t first = none;
    std::int32_t last = none;
};

}  // namespace vex
