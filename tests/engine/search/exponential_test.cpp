#include "search/exponential.hpp"

#include <gtest/gtest.h>

namespace engine {
namespace {

TEST(Exponential, IsCloseToTheTrueOneAndHasTheSameDigitsEverywhere) {
    for (double x = -699.9; x < 700.0; x += 0.37) {
        const double expected = std::exp(x);
        EXPECT_NEAR(exponential(x), expected, 1e-15 * std::fmax(1.0, std::fabs(x)) * expected) << x;
    }
    EXPECT_EQ(exponential(0.0), 1.0);
    EXPECT_EQ(exponential(-701.0), 0.0);
    EXPECT_EQ(exponential(std::nan("")), 0.0);
    EXPECT_EQ(exponential(701.0), std::numeric_limits<double>::infinity());
    EXPECT_EQ(exponential(-20.3), 0x1.a3b8dc86d1c8ep-30);
    EXPECT_EQ(powerOfTen(-4.7), 0x1.4ebfdd2860096p-16);
}

}  // namespace
}  // namespace engine
