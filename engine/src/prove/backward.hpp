#pragma once

#include <span>

#include "model/closed_model.hpp"
#include "prove/range.hpp"

namespace engine {

/// Receives what is learnt of expressions: the propagator.
class Narrowing {
public:
    /// The value of `e` is not NaN and lies in [lower, upper].
    virtual void restrict(ExpressionIndex e, double lower, double upper) = 0;
    /// [nbExpressions] what is known now.
    [[nodiscard]] virtual std::span<const Range> ranges() const = 0;
    [[nodiscard]] const Range& rangeOf(ExpressionIndex e) const {
        return ranges()[static_cast<std::size_t>(e)];
    }

protected:
    ~Narrowing() = default;
};

/// Narrows the operands of `e` by its range, which must not be mayBeNan (HC4-revise: Benhamou,
/// Goualard, Granvilliers, Puget 1999). O(operands). Bounds are computed outward.
void narrowOperands(const ClosedModel& model, ExpressionIndex e, Narrowing& narrowing);

/// `e` is nonzero and not NaN.
void restrictToTrue(const ClosedModel& model, ExpressionIndex e, Narrowing& narrowing);

}  // namespace engine
