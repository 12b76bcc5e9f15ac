#include "defvars/order_list.hpp"

#include <algorithm>

namespace vex {

namespace {

/// Numbers are from 1 to below this.
constexpr int nbNumberBits = 62;
constexpr std::uint64_t endOfNumbers = std::uint64_t{1} << nbNumberBits;

/// Left free beside a member at either end of the list: members come there most of the time.
constexpr std::uint64_t usualGap = std::uint64_t{1} << 30;

/// A range of 2^k numbers is sparse enough when it has at most this to the power of k members.
/// 1.5^62 members are more than there can be variables.
constexpr double sparseBase = 1.5;

}  // namespace

OrderList::OrderList(std::int32_t nbVariables)
    : numbers(index(nbVariables), 0),
      before(index(nbVariables), none),
      after(index(nbVariables), none) {}

void OrderList::remove(std::int32_t v) {
    const std::int32_t left = before[index(v)];
    const std::int32_t right = after[index(v)];
    (left == none ? first : after[index(left)]) = right;
    (right == none ? last : before[index(right)]) = left;
}

/// How much larger the right neighbour's number is than the left one's.
std::uint64_t OrderList::room(std::int32_t left, std::int32_t right) const {
    return (right == none ? endOfNumbers : numbers[index(right)]) -
           (left == none ? 0 : numbers[index(left)]);
}

void OrderList::placeBetween(std::int32_t left, std::int32_t v, std::int32_t right) {
    if (room(left, right) < 2) spreadAround(left == none ? right : left);
    const std::uint64_t half = room(left, right) / 2;
    if (left != none)
        numbers[index(v)] =
            numbers[index(left)] + (right == none ? std::min(half, usualGap) : half);
    else if (right != none)
        numbers[index(v)] = numbers[index(right)] - std::min(half, usualGap);
    else
        numbers[index(v)] = endOfNumbers / 2;
    before[index(v)] = left;
    after[index(v)] = right;
    (left == none ? first : after[index(left)]) = v;
    (right == none ? last : before[index(right)]) = v;
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
        const std::uint64_t begin = numbers[index(v)] & ~(size - 1);
        for (; before[index(left)] != none && numbers[index(before[index(left)])] >= begin;
             ++nbMembers)
            left = before[index(left)];
        for (; after[index(right)] != none && numbers[index(after[index(right)])] - begin < size;
             ++nbMembers)
            right = after[index(right)];
        const std::uint64_t distance = size / (nbMembers + 1);
        if (static_cast<double>(nbMembers) > nbAllowed || distance < 4) continue;
        std::uint64_t number = begin;
        for (std::int32_t u = left;; u = after[index(u)]) {
            number += distance;
            numbers[index(u)] = number;
            if (u == right) return;
        }
    }
}

}  // namespace vex
