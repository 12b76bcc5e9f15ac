#pragma once

#include <cstddef>
#include <vector>

#include "model/closed_model.hpp"
#include "operators/range.hpp"

namespace engine {

/// The ranges of all expressions, in 17 bytes each: a model of millions of terms has as many.
class RangeStore {
public:
    explicit RangeStore(std::size_t nbExpressions)
        : bounds_(nbExpressions, {-infinity, infinity}), mayBeNan_(nbExpressions, false) {}

    [[nodiscard]] Range of(ExpressionIndex e) const {
        const auto i = static_cast<std::size_t>(e);
        return {bounds_[i].lower, bounds_[i].upper, mayBeNan_[i]};
    }
    void set(ExpressionIndex e, const Range& r) {
        const auto i = static_cast<std::size_t>(e);
        bounds_[i] = {r.lower, r.upper};
        mayBeNan_[i] = r.mayBeNan;
    }

private:
    std::vector<Interval> bounds_;
    std::vector<bool> mayBeNan_;
};

}  // namespace engine
