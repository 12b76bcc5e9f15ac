#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "model/closed_model.hpp"

namespace engine {

/// A function of one real variable: |x|, x to a constant power, exp, log, sin, cos or tan.
struct Curve {
    enum class Kind : std::uint8_t { Abs, Power, Exp, Log, Sin, Cos, Tan };
    Kind kind;
    double exponent = 0.0;  ///< of Power; neither 0 nor 1

    auto operator<=>(const Curve&) const = default;
    /// NaN outside the domain, infinite at poles.
    [[nodiscard]] double value(double x) const;
    /// Of the right branch at kinks; infinite where the tangent is vertical.
    [[nodiscard]] double slope(double x) const;
};

/// The line slope * x + offset.
struct Line {
    double slope;
    double offset;
    [[nodiscard]] double at(double x) const { return slope * x + offset; }
};

/// Lines below (or above) a curve over an interval of its argument.
///
/// The highest line of slope s below f has the offset min (f(x) - s x), which is minus the convex
/// conjugate of f at s; the minimum lies at an end of the interval, at a kink, or where f' = s. So
/// one rule serves convex, concave and mixed pieces, and the envelope at a point is the best line
/// over all slopes (Rockafellar, "Convex Analysis", 1970, section 12).
class CurveLines {
public:
    /// @param domain  not empty; infinite ends are limits. Parts outside the curve's own domain are
    ///                left out: the argument is known to be inside it.
    CurveLines(const Curve& curve, Interval domain);

    /// The line of this slope that touches from below, or from above; an infinite offset means that
    /// there is none. Rounded to the safe side.
    [[nodiscard]] Line touching(double slope, bool isBelow) const;
    /// The line below (or above) that is nearest to the curve at `x`, inside the domain.
    [[nodiscard]] Line nearest(double x, bool isBelow) const;
    [[nodiscard]] const Interval& domain() const { return domain_; }
    /// Slope of the chord; not finite where an end has no value.
    [[nodiscard]] double chordSlope() const;

private:
    static constexpr std::size_t mostTouchingPoints = 6;
    struct Points {
        std::array<double, mostTouchingPoints> x;
        std::size_t nb = 0;
        void add(double point) { x[nb++] = point; }
    };

    [[nodiscard]] Points pointsOfSlope(double slope) const;
    void addPower(double slope, Points& points) const;
    void addPeriodic(double first, double period, Points& points) const;
    [[nodiscard]] double excessAt(double x, double slope) const;
    [[nodiscard]] double excessAtInfinity(double end, double slope) const;
    [[nodiscard]] Line bestLine(double x, bool isBelow) const;

    Curve curve_;
    Interval domain_;
    bool hasPole_ = false;  ///< strictly inside: no line at all
};

}  // namespace engine
