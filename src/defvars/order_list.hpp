#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vex {

/// Members in a row, numbered from 0, with an answer in O(1) to which of two comes first.
///
/// A linked list whose members carry ascending numbers. Where two neighbours leave no number free,
/// the numbers of the smallest sparse enough surroundings are spread anew: O(log n) amortised for
/// every placement (Bender, Cole, Demaine, Farach-Colton and Zito, "Two simplified algorithms for
/// maintaining order in a list", ESA 2002, section 2).
class OrderList {
public:
    explicit OrderList(std::int32_t nbMembers) : members_(static_cast<std::size_t>(nbMembers)) {}

    /// Places `v`, which is not in the list, behind all others.
    void placeLast(std::int32_t v) { placeBetween(last_, v, none); }
    /// Places `v`, which is not in the list, directly in front of (behind) member `u`.
    void placeBefore(std::int32_t v, std::int32_t u) { placeBetween(at(u).before, v, u); }
    void placeAfter(std::int32_t v, std::int32_t u) { placeBetween(u, v, at(u).after); }
    void remove(std::int32_t v);

    /// Is member `u` in front of member `v`? Those that are not in the list are all equal.
    [[nodiscard]] bool isBefore(std::int32_t u, std::int32_t v) const {
        return at(u).number < at(v).number;
    }

private:
    static constexpr std::int32_t none = -1;

    struct Member {
        std::uint64_t number = 0;  ///< ascending along the list; 0: not in it
        std::int32_t before = none;
        std::int32_t after = none;
    };

    [[nodiscard]] Member& at(std::int32_t v) { return members_[static_cast<std::size_t>(v)]; }
    [[nodiscard]] const Member& at(std::int32_t v) const {
        return members_[static_cast<std::size_t>(v)];
    }
    [[nodiscard]] std::uint64_t room(std::int32_t left, std::int32_t right) const;
    void placeBetween(std::int32_t left, std::int32_t v, std::int32_t right);
    void spreadAround(std::int32_t v);

    std::vector<Member> members_;  ///< [nbMembers]
    std::int32_t first_ = none;
    std::int32_t last_ = none;
};

}  // namespace vex
