#pragma once

#include <cstddef>
#include <deque>
#include <vector>

namespace engine {

/// Curvature of a function from the last steps and gradient changes (limited-memory BFGS: Nocedal,
/// "Updating quasi-Newton matrices with limited storage", Math. Comp. 35, 1980).
class LimitedMemory {
public:
    /// Keeps the pair unless its curvature is not positive.
    void add(const std::vector<double>& step, const std::vector<double>& gradientChange);
    void clear() { pairs_.clear(); }
    [[nodiscard]] bool isEmpty() const { return pairs_.empty(); }
    /// Replaces `direction`, a negative gradient, by the quasi-Newton direction within the
    /// coordinates where `isFree`; the others stay 0.
    void turn(std::vector<double>& direction, const std::vector<unsigned char>& isFree) const;

private:
    struct Pair {
        std::vector<double> step;
        std::vector<double> change;
    };
    static constexpr std::size_t most = 12;
    std::deque<Pair> pairs_;
};

}  // namespace engine
