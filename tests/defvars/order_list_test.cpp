#include "defvars/order_list.hpp"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

TEST(OrderList, KeepsItsOrderWhereverMembersAreCrowded) {
    constexpr std::int32_t nbVariables = 2000;
    std::mt19937 random(7);
    for (const std::size_t where : {0U, 1U, 2U, 3U, 4U}) {  // front, middle, end, anywhere, moves
        vex::OrderList list(nbVariables);
        std::vector<std::int32_t> twin;
        const auto place = [&](std::int32_t v, std::size_t k) {
            if (k == twin.size())
                list.placeLast(v);
            else if (k > 0 && v % 2 == 0)
                list.placeAfter(v, twin[k - 1]);
            else
                list.placeBefore(v, twin[k]);
            twin.insert(twin.begin() + static_cast<std::ptrdiff_t>(k), v);
        };
        for (std::int32_t v = 0; v < nbVariables; ++v)
            place(v, where < 3 ? where * twin.size() / 2 : random() % (twin.size() + 1));
        for (int k = 0; where == 4 && k < 20000; ++k) {  // within the first forty
            const std::size_t from = random() % 40;
            const std::int32_t v = twin[from];
            list.remove(v);
            twin.erase(twin.begin() + static_cast<std::ptrdiff_t>(from));
            place(v, random() % 40);
        }
        for (std::size_t k = 1; k < twin.size(); ++k)
            ASSERT_TRUE(list.isBefore(twin[k - 1], twin[k])) << where << ": " << k;
    }
}

}  // namespace
