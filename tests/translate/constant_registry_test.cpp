#include "translate/constant_registry.hpp"

#include <gtest/gtest.h>

namespace {

/// The optimizer may hand out one index for equal constants, or smaller ones later.
TEST(ConstantRegistry, KeepsTheLastValueOfEachIndexInAnyOrder) {
    vex::ConstantRegistry<double> registry;
    for (const int index : {5, 9, 3, 9, 7, 5}) registry.set(index, index + 0.5);
    registry.set(7, 1.5);
    registry.set(9, 2.5);
    for (const auto& [index, value] : {std::pair(3, 3.5), {5, 5.5}, {7, 1.5}, {9, 2.5}}) {
        ASSERT_NE(registry.find(index), nullptr) << index;
        EXPECT_EQ(*registry.find(index), value);
    }
    for (const int index : {2, 4, 6, 10}) EXPECT_EQ(registry.find(index), nullptr) << index;
}

}  // namespace
