#include "defvars/order_list.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

/// A list and its slow twin, a plain sequence.
struct Twins {
    explicit Twins(std::int32_t nbVariables) : list(nbVariables) {}

    void place(std::int32_t v, std::size_t position) {
        if (position == members.size())
            list.placeLast(v);
        else if (position > 0 && v % 2 == 0)
            list.placeAfter(v, members[position - 1]);
        else
            list.placeBefore(v, members[position]);
        members.insert(members.begin() + static_cast<std::ptrdiff_t>(position), v);
    }
    void remove(std::size_t position) {
        list.remove(members[position]);
        members.erase(members.begin() + static_cast<std::ptrdiff_t>(position));
    }
    [[nodiscard]] bool agree() const {
        return std::is_sorted(members.begin(), members.end(),
                              [this](auto u, auto v) { return list.isBefore(u, v); }) &&
               std::adjacent_find(members.begin(), members.end(), [this](auto u, auto v) {
                   return !list.isBefore(u, v);
               }) == members.end();
    }

    vex::OrderList list;
    std::vector<std::int32_t> members;
};

TEST(OrderList, KeepsItsOrderWhereverMembersAreCrowded) {
    constexpr std::int32_t nbVariables = 2000;
    const struct {
        const char* what;
        std::size_t (*position)(std::size_t nbMembers);
    } crowds[] = {
        {"at the front", [](std::size_t) -> std::size_t { return 0; }},
        {"at the end", [](std::size_t n) { return n; }},
        {"behind the first", [](std::size_t n) { return std::min<std::size_t>(n, 1); }},
        {"in front of the last", [](std::size_t n) { return n == 0 ? n : n - 1; }},
        {"in the middle", [](std::size_t n) { return n / 2; }},
    };
    for (const auto& crowd : crowds) {
        SCOPED_TRACE(crowd.what);
        Twins twins(nbVariables);
        for (std::int32_t v = 0; v < nbVariables; ++v)
            twins.place(v, crowd.position(twins.members.size()));
        EXPECT_TRUE(twins.agree());
    }
    std::mt19937 random(7);
    Twins twins(nbVariables);
    for (std::int32_t v = 0; v < nbVariables; ++v)
        twins.place(v, random() % (twins.members.size() + 1));
    for (int k = 0; k < 20000; ++k) {
        const std::size_t from = random() % 40;  // and back into the crowd
        const std::int32_t v = twins.members[from];
        twins.remove(from);
        twins.place(v, random() % 40);
    }
    EXPECT_TRUE(twins.agree());
}

}  // namespace
