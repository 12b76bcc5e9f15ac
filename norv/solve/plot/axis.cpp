#include "solve/plot/axis.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace norv {
namespace {

constexpr double nbIntervals = 5.0;       // between ticks, about
constexpr std::int32_t mostDecades = 6;   // that get a tick, on either side of 0
constexpr double sharpContrast = 1000.0;  // between values that a linear scale cannot both show

std::string label(double value) {
    constexpr int nbDigits = 12;  // hides what rounding leaves of 3 * 0.1
    constexpr double longest = 1e7;
    char text[32];
    char* const end =
        std::to_chars(text, text + sizeof text, value, std::chars_format::general, nbDigits).ptr;
    if (std::fabs(value) < longest) return {text, end};
    double rounded = value;
    std::from_chars(text, end, rounded);
    return {text, std::to_chars(text, text + sizeof text, rounded).ptr};  // the shorter form
}

/// 10^exponent to the last digit, which std::pow does not promise; 0 or infinite beyond all
/// doubles.
double powerOfTen(double exponent) {
    const std::string text = "1e" + std::to_string(static_cast<std::int32_t>(exponent));
    double power = exponent < 0.0 ? 0.0 : std::numeric_limits<double>::infinity();
    std::from_chars(text.data(), text.data() + text.size(), power);
    return power;
}

/// The round number, 1, 2 or 5 times a power of ten, next to `step`. After P. Heckbert, "Nice
/// numbers for graph labels", Graphics Gems (1990).
double roundStep(double step) {
    const double power = powerOfTen(std::floor(std::log10(step)));
    const double leading = step / power;
    if (leading < 1.5) return power;
    if (leading < 3.0) return 2.0 * power;
    return leading < 7.0 ? 5.0 * power : 10.0 * power;
}

/// The smallest magnitude apart from 0; 0 when there is none.
double smallestMagnitude(const std::vector<double>& values) {
    double smallest = 0.0;
    for (const double each : values) {
        const double magnitude = std::fabs(each);
        if (magnitude > 0.0 && (smallest == 0.0 || magnitude < smallest)) smallest = magnitude;
    }
    return smallest;
}

}  // namespace

Axis Axis::between(double low, double high) {
    Axis axis;
    axis.lowEnd_ = low;
    axis.highEnd_ = high;
    axis.addTicks(roundStep((high - low) / nbIntervals));
    return axis;
}

Axis Axis::around(const std::vector<double>& values) {
    const auto [lowest, highest] = std::minmax_element(values.begin(), values.end());
    double low = *lowest;
    double high = *highest;
    const double magnitude = std::max(std::fabs(low), std::fabs(high));
    const double smallest = smallestMagnitude(values);
    Axis axis;
    if (high - low > sharpContrast * std::fabs(values.back()) &&
        magnitude > sharpContrast * smallest) {
        axis.unit_ = powerOfTen(std::floor(std::log10(std::max(smallest, magnitude * 1e-12))));
        axis.spanLogarithmic(low, high);
        return axis;
    }
    // Closer together the values and their labels could not be told apart.
    constexpr double closest = 1e-10;
    if (high - low <= closest * magnitude || high == low) {
        const double margin = magnitude > 0.0 ? magnitude / 10.0 : 1.0;
        low -= margin;
        high += margin;
    }
    const double step = roundStep((high - low) / nbIntervals);
    axis.lowEnd_ = std::floor(low / step) * step;
    axis.highEnd_ = std::ceil(high / step) * step;
    axis.addTicks(step);
    return axis;
}

double Axis::position(double value) const {
    return (scaled(value) - scaled(lowEnd_)) / (scaled(highEnd_) - scaled(lowEnd_));
}

double Axis::scaled(double value) const {
    if (!isLogarithmic()) return value;
    return std::copysign(std::log10(1.0 + std::fabs(value) / unit_), value);
}

void Axis::addTicks(double step) {
    const double slack = step * 1e-6;  // the ends may have been rounded
    for (double k = std::ceil((lowEnd_ - slack) / step); k * step <= highEnd_ + slack; ++k)
        marks_.push_back({k * step, label(k * step + 0.0)});
}

/// Ticks at 0 and at powers of ten; the ends are the ticks around `low` and `high`.
void Axis::spanLogarithmic(double low, double high) {
    const double largest = std::max(std::fabs(low), std::fabs(high));
    const auto nbDecades = static_cast<std::int32_t>(std::ceil(std::log10(largest / unit_)));
    const std::int32_t stride = nbDecades / mostDecades + 1;
    std::vector<double> values = {0.0};
    // Next to 0 the first power would be in the way of its label.
    const bool showsZero = low <= 0.0 && high >= 0.0;
    for (std::int32_t k = showsZero ? stride : 0; k < nbDecades + stride; k += stride) {
        values.push_back(unit_ * powerOfTen(k));
        values.push_back(-values.back());
    }
    std::sort(values.begin(), values.end());
    const auto above = std::upper_bound(values.begin(), values.end(), low);
    const auto first = above == values.begin() ? above : above - 1;
    const auto last = std::lower_bound(first, values.end(), high);
    const auto end = last == values.end() ? last : last + 1;
    for (auto each = first; each != end; ++each) marks_.push_back({*each, label(*each)});
    lowEnd_ = marks_.front().value;
    highEnd_ = marks_.back().value;
}

}  // namespace norv
