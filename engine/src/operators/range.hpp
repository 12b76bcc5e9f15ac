#pragma once

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>

#include "model/value.hpp"

namespace engine {

constexpr double infinity = std::numeric_limits<double>::infinity();
/// Integers up to this magnitude are exact as doubles.
constexpr double largestExactInteger = 9007199254740992.0;  // 2^53

/// What is known of an expression's value in every feasible point: it lies in [lower, upper], or it
/// is NaN where `mayBeNan`. Empty and not mayBeNan: there is no feasible point.
///
/// Results beyond the doubles, and 0 to a negative power, count as the infinities of IEEE
/// arithmetic here. Evaluation calls them undefined and so accepts fewer points than ranges admit,
/// never more.
struct Range {
    double lower = -infinity;
    double upper = infinity;
    bool mayBeNan = false;

    [[nodiscard]] bool isEmpty() const { return lower > upper; }
    [[nodiscard]] bool isPoint() const { return lower == upper; }
    [[nodiscard]] bool contains(double v) const { return lower <= v && v <= upper; }
    /// Surely nonzero, and never NaN.
    [[nodiscard]] bool mustBeTrue() const { return !mayBeNan && !isEmpty() && !contains(0.0); }
    /// Zero or NaN.
    [[nodiscard]] bool cannotBeTrue() const {
        return isEmpty() ? mayBeNan : lower == 0.0 && upper == 0.0;
    }
    [[nodiscard]] bool mustBeZero() const { return cannotBeTrue() && !mayBeNan; }
};

constexpr Range emptyRange{infinity, -infinity, false};

/// The next doubles below and above `x`, or a little farther; infinities stay.
inline double below(double x) {
    if (!std::isfinite(x)) return x;
    return x - std::fabs(x) * DBL_EPSILON - std::numeric_limits<double>::denorm_min();
}
inline double above(double x) {
    return -below(-x);
}

/// `r` widened on both sides by the relative error of `nbRoundings` roundings.
inline Range widened(Range r, double nbRoundings) {
    const double relative = nbRoundings * DBL_EPSILON;
    const double least = std::numeric_limits<double>::min();
    if (std::isfinite(r.lower)) r.lower = below(r.lower - std::fabs(r.lower) * relative - least);
    if (std::isfinite(r.upper)) r.upper = above(r.upper + std::fabs(r.upper) * relative + least);
    return r;
}

inline Range hull(const Range& a, const Range& b) {
    return {std::min(a.lower, b.lower), std::max(a.upper, b.upper), a.mayBeNan || b.mayBeNan};
}

/// The product by the rule that an exact 0 times an infinity is 0.
inline double times(double a, double b) {
    return a == 0.0 || b == 0.0 ? 0.0 : a * b;
}

/// Bounds of a product of two ranges, by the four corners.
inline Range product(const Range& a, const Range& b) {
    if (a.isEmpty() || b.isEmpty()) return {infinity, -infinity, a.mayBeNan || b.mayBeNan};
    const double p = times(a.lower, b.lower);
    const double q = times(a.lower, b.upper);
    const double r = times(a.upper, b.lower);
    const double s = times(a.upper, b.upper);
    return {std::min({p, q, r, s}), std::max({p, q, r, s}), a.mayBeNan || b.mayBeNan};
}

inline Range negated(const Range& r) {
    return {-r.upper, -r.lower, r.mayBeNan};
}

inline Range absolute(const Range& r) {
    if (r.lower >= 0.0 || r.isEmpty()) return r;
    if (r.upper <= 0.0) return negated(r);
    return {0.0, std::max(-r.lower, r.upper), r.mayBeNan};
}

inline Range square(const Range& r) {
    const Range a = absolute(r);
    return {times(a.lower, a.lower), times(a.upper, a.upper), a.mayBeNan};
}

/// Bounds of numerator / denominator; a denominator that contains 0 leaves NaN possible.
inline Range quotient(const Range& a, const Range& b) {
    Range q{-infinity, infinity, a.mayBeNan || b.mayBeNan || b.contains(0.0)};
    if (b.lower < 0.0 && b.upper > 0.0) return q;
    if (a.isEmpty() || b.isEmpty() || b.cannotBeTrue()) return {infinity, -infinity, q.mayBeNan};
    if (std::isinf(std::max(std::fabs(a.lower), std::fabs(a.upper))) &&
        std::isinf(std::max(std::fabs(b.lower), std::fabs(b.upper)))) {
        q.mayBeNan = true;
        return q;
    }
    // A bound of 0 is approached from inside the range: 1 / 0 has the sign of the other bound.
    const bool positive = b.upper > 0.0;
    const auto over = [positive](double x, double y) {
        if (y != 0.0) return x / y;
        if (x == 0.0) return 0.0;
        return (x > 0.0) == positive ? infinity : -infinity;
    };
    const double corners[] = {over(a.lower, b.lower), over(a.lower, b.upper),
                              over(a.upper, b.lower), over(a.upper, b.upper)};
    q.lower = *std::min_element(std::begin(corners), std::end(corners));
    q.upper = *std::max_element(std::begin(corners), std::end(corners));
    return q;
}

/// The largest left side that "left <= right" accepts when right <= `bound`, and the smallest for
/// "left >= right" when right >= `bound`. `exact`: both sides are integers. A point that the judge
/// would accept is never cut off: the tolerance is taken a little larger than it is.
inline double toleratedAbove(double bound, bool exact) {
    if (exact || std::isinf(bound)) return bound;
    return above(bound + relationTolerance * (1.0 + 4e-6) * std::max(1.0, std::fabs(bound)));
}
inline double toleratedBelow(double bound, bool exact) {
    return -toleratedAbove(-bound, exact);
}

/// Lower and upper total of many ranges, from which one can be taken away again in O(1).
///
/// Unbounded terms are counted, the others added in extended precision; the outcome is widened by
/// the rounding errors of all additions, so that exactly and inexactly added values lie inside.
class RangeSum {
public:
    void add(const Range& r) {
        addTo(lower_, nbUnboundedLower_, r.lower);
        addTo(upper_, nbUnboundedUpper_, r.upper);
        mayBeNan_ = mayBeNan_ || r.mayBeNan;
    }
    /// Terms of a finite width below this cannot be narrowed by knowing that the total lies in
    /// `whole`; 0 where some may be NaN.
    [[nodiscard]] double widthWithoutEffect(const Range& whole) const {
        if (mayBeNan_ || isHuge()) return 0.0;
        const auto room = [this](int nbUnbounded, long double slack, double side) {
            if (nbUnbounded > 0 || std::isinf(side)) return infinity;
            // By so much roundings may lie.
            const double size = static_cast<double>(magnitude_) + std::fabs(side);
            return static_cast<double>(slack) - 8.0 * DBL_EPSILON * size;
        };
        return std::min(room(nbUnboundedUpper_, upper_ - whole.lower, whole.lower),
                        room(nbUnboundedLower_, whole.upper - lower_, whole.upper));
    }
    [[nodiscard]] Range total() const {
        if (isHuge()) return {-infinity, infinity, true};
        // Both infinities among the terms: their sum may be NaN.
        return {nbUnboundedLower_ > 0 ? -infinity : safeBelow(lower_),
                nbUnboundedUpper_ > 0 ? infinity : safeAbove(upper_),
                mayBeNan_ || (nbUnboundedLower_ > 0 && nbUnboundedUpper_ > 0)};
    }
    /// The total of all terms but `r`.
    [[nodiscard]] Range without(const Range& r) const {
        if (isHuge()) return {-infinity, infinity, false};
        const bool ownLower = std::isinf(r.lower);
        const bool ownUpper = std::isinf(r.upper);
        const bool unboundedLower = nbUnboundedLower_ > (ownLower ? 1 : 0);
        const bool unboundedUpper = nbUnboundedUpper_ > (ownUpper ? 1 : 0);
        return {unboundedLower ? -infinity : safeBelow(ownLower ? lower_ : lower_ - r.lower),
                unboundedUpper ? infinity : safeAbove(ownUpper ? upper_ : upper_ - r.upper), false};
    }

private:
    /// Partial sums may overflow, and overflown ones be NaN.
    [[nodiscard]] bool isHuge() const { return magnitude_ > 1e300L; }
    void addTo(long double& total, int& nbUnbounded, double bound) {
        if (std::isinf(bound)) {
            ++nbUnbounded;
            return;
        }
        total += static_cast<long double>(bound);
        magnitude_ += static_cast<long double>(std::fabs(bound));
        isIntegral_ = isIntegral_ && bound == std::rint(bound);
        ++nbTerms_;
    }
    [[nodiscard]] double safeBelow(long double v) const {
        // Sums of integers in this reach are exact.
        if (isIntegral_ && magnitude_ < static_cast<long double>(largestExactInteger)) {
            return static_cast<double>(v);
        }
        const long double error =
            static_cast<long double>(nbTerms_ + 2) * LDBL_EPSILON * magnitude_;
        return below(static_cast<double>(v - error));
    }
    [[nodiscard]] double safeAbove(long double v) const { return -safeBelow(-v); }

    long double lower_ = 0.0L;
    long double upper_ = 0.0L;
    long double magnitude_ = 0.0L;
    int nbUnboundedLower_ = 0;
    int nbUnboundedUpper_ = 0;
    int nbTerms_ = 0;
    bool isIntegral_ = true;
    bool mayBeNan_ = false;
};

inline Range difference(const Range& a, const Range& b) {
    RangeSum total;
    total.add(a);
    total.add(negated(b));
    return total.total();
}

/// The range of a truth value.
inline Range truth(bool canBeFalse, bool canBeTrue, bool mayBeNan) {
    return {canBeFalse ? 0.0 : 1.0, canBeTrue ? 1.0 : 0.0, mayBeNan};
}

/// The range of `not`.
inline Range negation(const Range& r) {
    return truth(/*canBeFalse=*/!r.cannotBeTrue(), /*canBeTrue=*/r.contains(0.0), r.mayBeNan);
}

}  // namespace engine
