#pragma once

#include <cmath>
#include <cstdint>
#include <map>
#include <utility>

namespace norv {

/// Notices when coefficients of one variable in one row, each finite, add up to infinity.
///
/// Only places that have met a large coefficient are remembered: of smaller ones it takes more
/// than a file holds. Those before the first large one are left out, so that a sum within 1e-8 of
/// the limit, relative to it, may pass.
class CoefficientSums {
public:
    /// @param row  any number that tells rows and objectives apart.
    /// @return whether the sum is still finite.
    [[nodiscard]] bool add(std::int32_t row, std::int32_t variable, double coefficient) {
        constexpr double large = 1e290;
        const bool isLarge = std::fabs(coefficient) >= large;
        if (!isLarge && sums_.empty()) return true;
        const std::pair place(row, variable);
        const auto found = isLarge ? sums_.try_emplace(place, 0.0).first : sums_.find(place);
        return found == sums_.end() || std::isfinite(found->second += coefficient);
    }

private:
    std::map<std::pair<std::int32_t, std::int32_t>, double> sums_;
};

}  // namespace norv
