#include "global/switches.hpp"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "operators/range.hpp"

namespace engine {
namespace {

/// Longer rows switch nothing, as a rule, and looking at all their pairs takes long.
constexpr std::size_t longestRow = 8;

/// Bounds of a column while a binary is 0 and while it is 1.
struct SwitchedBounds {
    double lower[2];
    double upper[2];
};

class SwitchFinder {
public:
    explicit SwitchFinder(const LinearModel& model) : model_(model) {}

    std::vector<Switch> run();

private:
    void readRow(std::size_t row, double sign, double upper);
    [[nodiscard]] bool isBinary(std::size_t j) const {
        return model_.isInteger[j] != 0 && model_.lower[j] == 0.0 && model_.upper[j] == 1.0;
    }
    [[nodiscard]] double least(double coefficient, std::size_t j) const {
        return coefficient * (coefficient > 0.0 ? model_.lower[j] : model_.upper[j]);
    }

    const LinearModel& model_;
    std::map<std::pair<std::size_t, std::size_t>, SwitchedBounds> bounds_;  ///< column, binary
};

/// sign * row <= upper bounds each column where the others are at their least.
void SwitchFinder::readRow(std::size_t row, double sign, double upper) {
    const auto first = static_cast<std::size_t>(model_.rowStart[row]);
    const auto last = static_cast<std::size_t>(model_.rowStart[row + 1]);
    if (std::isinf(upper) || last - first > longestRow) return;
    for (std::size_t x = first; x < last; ++x) {
        const auto j = static_cast<std::size_t>(model_.column[x]);
        if (isBinary(j)) continue;
        const double factor = sign * model_.coefficient[x];
        for (std::size_t y = first; y < last; ++y) {
            const auto b = static_cast<std::size_t>(model_.column[y]);
            if (!isBinary(b)) continue;
            double rest = 0.0;
            for (std::size_t k = first; k < last; ++k) {
                if (k == x || k == y) continue;
                rest +=
                    least(sign * model_.coefficient[k], static_cast<std::size_t>(model_.column[k]));
            }
            if (!std::isfinite(rest)) continue;
            const SwitchedBounds own{{model_.lower[j], model_.lower[j]},
                                     {model_.upper[j], model_.upper[j]}};
            SwitchedBounds& known = bounds_.try_emplace({j, b}, own).first->second;
            for (int state = 0; state < 2; ++state) {
                const double bound = (upper - rest - state * sign * model_.coefficient[y]) / factor;
                double& side = factor > 0.0 ? known.upper[state] : known.lower[state];
                side = factor > 0.0 ? std::min(side, bound) : std::max(side, bound);
            }
        }
    }
}

std::vector<Switch> SwitchFinder::run() {
    for (std::size_t i = 0; i < model_.nbRows(); ++i) {
        readRow(i, 1.0, model_.rowUpper[i]);
        readRow(i, -1.0, -model_.rowLower[i]);
    }
    std::vector<Switch> switches(model_.nbColumns());
    for (const auto& [pair, known] : bounds_) {
        Switch& own = switches[pair.first];
        if (own.binary != noColumn) continue;
        for (int state = 0; state < 2; ++state) {
            // To the digit: a line that leans on it must hold.
            if (known.lower[state] != known.upper[state]) continue;
            own = {static_cast<std::int32_t>(pair.second), static_cast<double>(state),
                   known.lower[state]};
        }
    }
    return switches;
}

}  // namespace

std::vector<Switch> switchesOf(const LinearModel& model) {
    return SwitchFinder(model).run();
}

}  // namespace engine
