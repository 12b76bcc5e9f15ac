#include "defvars/order_list.hpp"

#include <algorithm>
#include <cassert>

namespace vex {

namespace {

/// Numbers are from 1 to below this.
constexpr int nbNumberBits = 62;
constexpr std::uint64_t endOfNumbers = std::uint64_t{1} << nbNumberBits;

/// Left free beside a member at either end of the list: members come there most of the time.
constexpr std::uint64_t usualGap = std::uint64_t{1} << 30;

/// A range of 2^k numbers is sparse enough when it has at most this to the power of k members.
/// 1.5^62 are more than there can be members.
constexpr double sparseBase = 1.5;

}  // namespace

void OrderList::remove(std::int32_t v) {
    const std::int32_t left = at(v).before;
    const std::int32_t right = at(v).after;
    (left == none ? first_ : at(left).after) = right;
    (right == none ? last_ : at(right).before) = left;
    at(v).number = 0;
}

/// How much larger the right neighbour's number is than the left one's.
std::uint64_t OrderList::room(std::int32_t left, std::int32_t right) const {
    return (right == none ? endOfNumbers : at(right).number) - (left == none ? 0 : at(left).number);
}

void OrderList::placeBetween(std::int32_t left, std::int32_t v, std::int32_t right) {
    assert(at(v).number == 0);
    if (room(left, right) < 2) spreadAround(left == none ? right : left);
    const std::uint64_t half = room(left, right) / 2;
    if (left != none)
        at(v).number = at(left).number + (right == none ? std::min(half, usualGap) : half);
    else if (right != none)
        at(v).number = at(right).number - std::min(half, usualGap);
    else
        at(v).number = endOfNumbers / 2;
    at(v).before = left;
    at(v).after = right;
    (left == none ? first_ : at(left).after) = v;
    (right == none ? last_ : at(right).before) = v;
}

/// Gives even distances to the members of the smallest sparse enough range of numbers, aligned to
/// a power of two, around member `v`.
void OrderList::spreadAround(std::int32_t v) {
    std::int32_t left = v;
    std::int32_t right = v;
    std::uint64_t nbMembers = 1;
    double nbAllowed = sparseBase;
    for (int k = 2; k <= nbNumberBits; ++k) {
        nbAllowed *= sparseBase;
        const std::uint64_t size = std::uint64_t{1} << k;
        const std::uint64_t begin = at(v).number & ~(size - 1);
        for (; at(left).before != none && at(at(left).before).number >= begin; ++nbMembers)
            left = at(left).before;
        for (; at(right).after != none && at(at(right).after).number - begin < size; ++nbMembers)
            right = at(right).after;
        const std::uint64_t distance = size / (nbMembers + 1);
        if (static_cast<double>(nbMembers) > nbAllowed || distance < 4) continue;
        std::uint64_t number = begin;
        for (std::int32_t u = left;; u = at(u).after) {
            number += distance;
            at(u).number = number;
            if (u == right) return;
        }
    }
}

}  // namespace vex
