#pragma once

#include "model/closed_model.hpp"
#include "prove/range_store.hpp"

namespace engine {

/// Receives what is learnt of expressions: the propagator.
class Narrowing {
public:
    /// The value of `e` is not NaN and lies in [lower, upper].
    virtual void restrict(ExpressionIndex e, double lower, double upper) = 0;
    /// What is known now.
    [[nodiscard]] virtual const RangeStore& ranges() const = 0;
    [[nodiscard]] Range rangeOf(ExpressionIndex e) const { return ranges().of(e); }

protected:
    ~Narrowing() = default;
};

/// Narrows the operands of `e` by its range, which must not be mayBeNan (HC4-revise: Benhamou,
/// Goualard, Granvilliers, Puget 1999). O(operands). Bounds are computed outward.
void narrowOperands(const ClosedModel& model, ExpressionIndex e, Narrowing& narrowing);

/// `e` is nonzero and not NaN.
void restrictToTrue(const ClosedModel& model, ExpressionIndex e, Narrowing& narrowing);

}  // namespace engine
