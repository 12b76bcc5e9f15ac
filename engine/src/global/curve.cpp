#include "global/curve.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace engine {
namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();
/// Relative error of values and touching points, generously.
constexpr double rounding = 1e-13;

bool isWhole(double p) {
    return p == std::rint(p);
}
bool isOdd(double p) {
    return std::fmod(std::fabs(p), 2.0) == 1.0;
}

/// Where the curve has values.
Interval naturalDomain(const Curve& curve) {
    const bool isOneSided = curve.kind == Curve::Kind::Log ||
                            (curve.kind == Curve::Kind::Power && !isWhole(curve.exponent));
    return {isOneSided ? 0.0 : -infinite, infinite};
}

double signedInfinity(double sign) {
    return sign > 0.0 ? infinite : -infinite;
}

}  // namespace

double Curve::value(double x) const {
    switch (kind) {
        case Kind::Abs:
            return std::fabs(x);
        case Kind::Power:
            return std::pow(x, exponent);
        case Kind::Exp:
            return std::exp(x);
        case Kind::Log:
            return std::log(x);
        case Kind::Sin:
            return std::sin(x);
        case Kind::Cos:
            return std::cos(x);
        case Kind::Tan:
            return std::tan(x);
    }
    return std::numeric_limits<double>::quiet_NaN();
}

double Curve::slope(double x) const {
    switch (kind) {
        case Kind::Abs:
            return x < 0.0 ? -1.0 : 1.0;
        case Kind::Power:
            return exponent * std::pow(x, exponent - 1.0);
        case Kind::Exp:
            return std::exp(x);
        case Kind::Log:
            return 1.0 / x;
        case Kind::Sin:
            return std::cos(x);
        case Kind::Cos:
            return -std::sin(x);
        case Kind::Tan:
            return 1.0 + std::tan(x) * std::tan(x);
    }
    return std::numeric_limits<double>::quiet_NaN();
}

CurveLines::CurveLines(const Curve& curve, Interval domain) : curve_(curve) {
    const Interval natural = naturalDomain(curve);
    domain_ = {std::max(domain.lower, natural.lower), std::min(domain.upper, natural.upper)};
    // An argument outside by rounding alone: the border is what it stands for.
    if (domain_.isEmpty()) domain_ = {natural.lower, natural.lower};
    const bool spansZero = domain_.lower < 0.0 && domain_.upper > 0.0;
    if (curve.kind == Curve::Kind::Power) hasPole_ = curve.exponent < 0.0 && spansZero;
    if (curve.kind == Curve::Kind::Tan) {
        const auto branch = [](double x) { return std::floor(x / std::numbers::pi + 0.5); };
        hasPole_ = !(std::max(std::fabs(domain_.lower), std::fabs(domain_.upper)) < 1e6) ||
                   branch(domain_.lower) != branch(domain_.upper);
    }
}

/// x^p has the slope s where |x| = |s / p|^(1 / (p - 1)); the sign follows from those of s and p.
void CurveLines::addPower(double slope, Points& points) const {
    const double p = curve_.exponent;
    const double ratio = slope / p;
    const double size = std::pow(std::fabs(ratio), 1.0 / (p - 1.0));
    if (!std::isfinite(size)) return;
    if (!isWhole(p) || isOdd(p)) {
        if (ratio < 0.0) return;
        points.add(size);
        if (isWhole(p)) points.add(-size);
    } else {
        points.add(std::copysign(size, ratio));
    }
}

/// The first and the last of first + k * period inside the domain: along them f - s x is monotone.
void CurveLines::addPeriodic(double first, double period, Points& points) const {
    if (std::isfinite(domain_.lower)) {
        points.add(first + std::ceil((domain_.lower - first) / period) * period);
    }
    if (std::isfinite(domain_.upper)) {
        points.add(first + std::floor((domain_.upper - first) / period) * period);
    }
    if (std::isinf(domain_.lower) && std::isinf(domain_.upper)) points.add(first);
}

CurveLines::Points CurveLines::pointsOfSlope(double slope) const {
    constexpr double pi = std::numbers::pi;
    Points points;
    switch (curve_.kind) {
        case Curve::Kind::Abs:
            points.add(0.0);
            break;
        case Curve::Kind::Power:
            addPower(slope, points);
            break;
        case Curve::Kind::Exp:
            if (slope > 0.0) points.add(std::log(slope));
            break;
        case Curve::Kind::Log:
            if (slope > 0.0) points.add(1.0 / slope);
            break;
        case Curve::Kind::Sin:
            if (std::fabs(slope) > 1.0) break;
            addPeriodic(std::acos(slope), 2.0 * pi, points);
            addPeriodic(-std::acos(slope), 2.0 * pi, points);
            break;
        case Curve::Kind::Cos:
            if (std::fabs(slope) > 1.0) break;
            addPeriodic(-std::asin(slope), 2.0 * pi, points);
            addPeriodic(pi + std::asin(slope), 2.0 * pi, points);
            break;
        case Curve::Kind::Tan:
            if (slope < 1.0) break;
            addPeriodic(std::atan(std::sqrt(slope - 1.0)), pi, points);
            addPeriodic(-std::atan(std::sqrt(slope - 1.0)), pi, points);
            break;
    }
    return points;
}

/// The limit of f(x) - s x at an infinite end.
double CurveLines::excessAtInfinity(double end, double slope) const {
    const double side = end > 0.0 ? 1.0 : -1.0;
    const double linear = slope == 0.0 ? 0.0 : signedInfinity(-slope * side);
    switch (curve_.kind) {
        case Curve::Kind::Abs:
            return slope * side == 1.0 ? 0.0 : signedInfinity(1.0 - slope * side);
        case Curve::Kind::Power: {
            const double p = curve_.exponent;
            const double sign = side < 0.0 && isOdd(p) ? -1.0 : 1.0;
            if (p < 0.0) return linear;
            return p > 1.0 || slope == 0.0 ? sign * infinite : linear;
        }
        case Curve::Kind::Exp:
            return end > 0.0 ? infinite : linear;
        case Curve::Kind::Log:
            return slope == 0.0 ? infinite : linear;
        case Curve::Kind::Sin:
        case Curve::Kind::Cos:
            // Oscillates for ever where the slope does not decide: no less than -1 and no more
            // than 1, which the points of that slope reach.
            return slope == 0.0 ? std::numeric_limits<double>::quiet_NaN() : linear;
        case Curve::Kind::Tan:
            return std::numeric_limits<double>::quiet_NaN();
    }
    return std::numeric_limits<double>::quiet_NaN();
}

double CurveLines::excessAt(double x, double slope) const {
    if (std::isinf(x)) return excessAtInfinity(x, slope);
    double value = curve_.value(x);
    // A pole at the lower end is approached from above, one at the upper end from below.
    if (std::isinf(value) && x == domain_.upper && curve_.kind == Curve::Kind::Power) {
        value = isOdd(curve_.exponent) && x <= 0.0 ? -infinite : infinite;
    }
    return value - slope * x;
}

Line CurveLines::touching(double slope, bool isBelow) const {
    const double none = isBelow ? -infinite : infinite;
    if (hasPole_ || !std::isfinite(slope)) return {slope, none};
    const double sign = isBelow ? 1.0 : -1.0;
    double best = infinite;
    const auto visit = [&](double x) {
        const double excess = excessAt(x, slope);
        if (std::isnan(excess)) return;
        const double size = std::fabs(curve_.value(x)) + std::fabs(slope * x);
        const double slack = std::isfinite(size) ? rounding * size : 0.0;
        best = std::min(best, sign * excess - slack);
    };
    visit(domain_.lower);
    visit(domain_.upper);
    const Points points = pointsOfSlope(slope);
    for (std::size_t k = 0; k < points.nb; ++k) {
        if (points.x[k] > domain_.lower && points.x[k] < domain_.upper) visit(points.x[k]);
    }
    return {slope, sign * best};
}

double CurveLines::chordSlope() const {
    const double width = domain_.upper - domain_.lower;
    return (curve_.value(domain_.upper) - curve_.value(domain_.lower)) / width;
}

/// Ternary search for the slope whose line is best at `x`: the height is concave in the slope.
Line CurveLines::bestLine(double x, bool isBelow) const {
    constexpr int nbSteps = 60;
    const double sign = isBelow ? 1.0 : -1.0;
    const auto extreme = touching(0.0, isBelow).offset;
    const auto toward = [&](double end) { return (curve_.value(end) - extreme) / (end - x); };
    double low = toward(isBelow ? domain_.lower : domain_.upper);
    double high = toward(isBelow ? domain_.upper : domain_.lower);
    if (!std::isfinite(low) || !std::isfinite(high)) return touching(0.0, isBelow);
    if (low > high) std::swap(low, high);
    const auto height = [&](double slope) { return sign * touching(slope, isBelow).at(x); };
    for (int step = 0; step < nbSteps && high - low > rounding * (std::fabs(low) + std::fabs(high));
         ++step) {
        const double first = low + (high - low) / 3.0;
        const double second = high - (high - low) / 3.0;
        if (height(first) < height(second)) {
            low = first;
        } else {
            high = second;
        }
    }
    return touching(0.5 * (low + high), isBelow);
}

Line CurveLines::nearest(double x, bool isBelow) const {
    const double value = curve_.value(x);
    const Line tangent = touching(curve_.slope(x), isBelow);
    const double gap = std::fabs(value - tangent.at(x));
    const double near = 1e-9 * std::max(1.0, std::fabs(value));
    if (gap <= near) return tangent;
    if (!(domain_.lower < x && x < domain_.upper)) return tangent;
    const Line chord = touching(chordSlope(), isBelow);
    if (std::fabs(value - chord.at(x)) <= near) return chord;
    return bestLine(x, isBelow);
}

}  // namespace engine
