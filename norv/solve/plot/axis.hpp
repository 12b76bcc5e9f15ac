#pragma once

#include <string>
#include <vector>

namespace norv {

struct Tick {
    double value;
    std::string label;
};

/// One axis of a plot: where a value stands on it, and its round ticks.
class Axis {
public:
    /// From `low` to exactly `high`, ticks in between.
    static Axis between(double low, double high);
    /// Room for all values, from tick to tick. The scale is linear unless the values come down (or
    /// up) by more than three orders of magnitude towards the last one; then it is logarithmic on
    /// both sides of 0 and linear near it.
    /// @param values  finite, in the order of time, at least one.
    static Axis around(const std::vector<double>& values);

    /// 0 at the low end, 1 at the high one.
    [[nodiscard]] double position(double value) const;
    [[nodiscard]] const std::vector<Tick>& ticks() const { return marks_; }
    [[nodiscard]] bool isLogarithmic() const { return unit_ > 0.0; }

private:
    [[nodiscard]] double scaled(double value) const;
    void addTicks(double step);
    void spanLogarithmic(double low, double high);

    double lowEnd_ = 0.0;
    double highEnd_ = 1.0;
    double unit_ = 0.0;  ///< up to about here a logarithmic scale is linear; 0: a linear scale
    std::vector<Tick> marks_;
};

}  // namespace norv
