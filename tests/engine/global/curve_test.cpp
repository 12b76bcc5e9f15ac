#include "global/curve.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "engine/random_models.hpp"
#include "operators/range.hpp"

namespace engine {
namespace {

using Kind = Curve::Kind;

const Curve curves[] = {
    {Kind::Abs},        {Kind::Exp},          {Kind::Log},        {Kind::Sin},
    {Kind::Cos},        {Kind::Tan},          {Kind::Power, 2.0}, {Kind::Power, 3.0},
    {Kind::Power, 4.0}, {Kind::Power, -1.0},  {Kind::Power, -2},  {Kind::Power, 0.5},
    {Kind::Power, 1.5}, {Kind::Power, -0.75}, {Kind::Power, 5.0}, {Kind::Power, -3.0},
};

TEST(CurveLines, LieBelowAndAboveTheCurveAndTouchItWhereItCurvesThatWay) {
    testing::RandomModels random(1);
    for (int trial = 0; trial < 20'000; ++trial) {
        const Curve& curve = curves[random.below(static_cast<int>(std::size(curves)))];
        const double lower = random.uniform(-6.0, 4.0);
        const CurveLines lines(curve, {lower, lower + std::pow(10.0, random.uniform(-3.0, 1.5))});
        const auto [first, last] = lines.domain();
        if (first == last) continue;
        const double at = random.uniform(first, last);
        const double slope = random.uniform(-5.0, 5.0);
        const bool isBelow = random.below(2) == 0;
        const double sign = isBelow ? 1.0 : -1.0;
        const Line both[] = {lines.nearest(at, isBelow), lines.touching(slope, isBelow)};
        double least = infinity;
        for (int k = 0; k <= 50; ++k) {
            const double x = first + (last - first) * k / 50.0;
            const double value = curve.value(x);
            if (!std::isfinite(value)) continue;
            for (const Line& line : both) {
                ASSERT_GE(sign * (value - line.at(x)), -1e-12 * (1.0 + std::fabs(value)))
                    << static_cast<int>(curve.kind) << " " << curve.exponent << " on " << first
                    << " " << last << " at " << x;
            }
            least = std::min(least, sign * (value - both[1].at(x)) / (1.0 + std::fabs(value)));
        }
        // Somewhere between the samples it touches.
        const double steep = std::fabs(slope) * (last - first) + 1.0;
        if (std::isfinite(least) && last - first < 0.5) {
            EXPECT_LT(least, 0.1 * steep);
        }
        const double curvature =
            curve.value(at - 1e-4) + curve.value(at + 1e-4) - 2.0 * curve.value(at);
        const Line chord = lines.touching(lines.chordSlope(), isBelow);
        const double gap = sign * (curve.value(at) - both[0].at(at));
        if (!std::isfinite(gap)) continue;
        const double near = 1e-8 * (1.0 + std::fabs(curve.value(at)));
        EXPECT_LE(gap, sign * (curve.value(at) - chord.at(at)) * (1.0 + 1e-8) + near);
        const bool isWholly = curve.kind == Kind::Exp || curve.exponent == 2.0;
        if (isWholly && sign * curvature > 0.0) {
            EXPECT_NEAR(gap, 0.0, near);
        }
    }
}

TEST(CurveLines, KnowTheirLimitsWhereTheArgumentIsUnbounded) {
    struct Case {
        Curve curve;
        Interval domain;
        double slope;
        double below;
        double above;
    };
    const Case cases[] = {
        {{Kind::Exp}, {-infinity, infinity}, 1.0, 1.0, infinity},
        {{Kind::Exp}, {-infinity, 0.0}, 0.0, 0.0, 1.0},
        {{Kind::Power, 2.0}, {-infinity, infinity}, 4.0, -4.0, infinity},
        {{Kind::Power, 3.0}, {-infinity, infinity}, 3.0, -infinity, infinity},
        {{Kind::Power, 3.0}, {0.0, infinity}, 3.0, -2.0, infinity},
        {{Kind::Power, 0.5}, {0.0, infinity}, 0.5, -infinity, 0.5},
        {{Kind::Power, -1.0}, {1.0, infinity}, 0.0, 0.0, 1.0},
        {{Kind::Power, -1.0}, {-1.0, 1.0}, 0.0, -infinity, infinity},
        {{Kind::Power, -1.0}, {-2.0, 0.0}, 0.0, -infinity, -0.5},
        {{Kind::Log}, {-5.0, 1.0}, 1.0, -infinity, -1.0},
        {{Kind::Abs}, {-infinity, infinity}, 1.0, 0.0, infinity},
        {{Kind::Abs}, {-infinity, infinity}, 0.5, 0.0, infinity},
        {{Kind::Sin}, {-infinity, infinity}, 0.0, -1.0, 1.0},
        {{Kind::Sin}, {0.0, infinity}, 0.5, -infinity, 0.5},
        {{Kind::Tan}, {-1.0, 2.0}, 0.0, -infinity, infinity},
    };
    for (const Case& c : cases) {
        const CurveLines lines(c.curve, c.domain);
        const auto check = [&](double offset, double expected) {
            if (std::isinf(expected)) {
                EXPECT_EQ(offset, expected) << static_cast<int>(c.curve.kind);
            } else {
                const double most = c.curve.kind == Kind::Sin && c.slope > 0.0 ? 1.0 : 1e-9;
                EXPECT_NEAR(offset, expected, most) << static_cast<int>(c.curve.kind);
            }
        };
        check(lines.touching(c.slope, /*isBelow=*/true).offset, c.below);
        check(lines.touching(c.slope, /*isBelow=*/false).offset, c.above);
    }
}

}  // namespace
}  // namespace engine
