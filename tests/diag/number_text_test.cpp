#include "diag/number_text.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

namespace {

std::string printed(const char* format, double value) {
    char text[512];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

TEST(NumberText, IsWhatPrintfWritesInThePlainLocale) {
    std::vector<double> values = {0.0,
                                  -0.0,
                                  1.0,
                                  125.0,
                                  0.43429448190325176,
                                  1e-7,
                                  2.5,
                                  999999.5,
                                  1e100,
                                  1e-5,
                                  1e15,
                                  5e-324,
                                  std::numeric_limits<double>::max(),
                                  std::numeric_limits<double>::infinity()};
    std::mt19937_64 generator(20);
    for (int k = 0; k < 20000; ++k) values.push_back(std::bit_cast<double>(generator()));
    for (const double value : values) {
        if (std::isnan(value)) continue;
        for (const double v : {value, -value}) {
            ASSERT_EQ(vex::scientificText(v, 8, 15), printed("%15.8e", v));
            ASSERT_EQ(vex::generalText(v, 6), printed("%g", v));
            ASSERT_EQ(vex::generalText(v, 10), printed("%.10g", v));
        }
    }
    EXPECT_EQ(vex::scientificText(std::nan(""), 8, 15), "            nan");
}

}  // namespace
