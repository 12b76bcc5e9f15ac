#include "translate/saturate.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

TEST(Saturate, TruncatesWithinTheRangeAndStopsAtItsEnds) {
    struct Case {
        double value;
        std::int32_t narrow;
        std::int64_t wide;
    };
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    const Case cases[] = {
        {59.9, 59, 59},
        {-59.9, -59, -59},
        {2147483647.5, 2147483647, 2147483647},
        {2147483648.0, 2147483647, 2147483648},
        {-2147483649.0, -2147483647 - 1, -2147483649},
        {0x1p63, 2147483647, largest},
        {-0x1p63, -2147483647 - 1, lowest},
        {-std::numeric_limits<double>::infinity(), -2147483647 - 1, lowest},
        {std::numeric_limits<double>::quiet_NaN(), 2147483647, largest},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(vex::saturate<std::int32_t>(c.value), c.narrow) << c.value;
        EXPECT_EQ(vex::saturate<std::int64_t>(c.value), c.wide) << c.value;
    }
}

}  // namespace
