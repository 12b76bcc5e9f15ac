#pragma once

#include "operators/operands.hpp"

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

/// `e` is nonzero and not NaN.
inline void restrictToTrue(const ClosedModel& model, ExpressionIndex e, Narrowing& narrowing) {
    narrowing.restrict(e, -infinity, infinity);
    const Range r = narrowing.rangeOf(e);
    const bool isInteger = model.isDouble[static_cast<std::size_t>(e)] == 0;
    // Zero at an end of the range goes; of a double only zero itself would go.
    double lower = r.lower;
    double upper = r.upper;
    if (r.cannotBeTrue()) return narrowing.restrict(e, infinity, -infinity);
    if (lower == 0.0 && isInteger) lower = 1.0;
    if (upper == 0.0 && isInteger) upper = -1.0;
    narrowing.restrict(e, lower, upper);
}

/// One step of narrowing operands by the range of their operator, which is not mayBeNan.
class NarrowingStep : public Operands {
public:
    NarrowingStep(const ClosedModel& model, ExpressionIndex e, Narrowing& narrowing)
        : Operands(model, e), narrowing_(narrowing) {}

    [[nodiscard]] Range own() const { return narrowing_.rangeOf(expression()); }
    /// The values that the exact operation may have had before the judge's rounding.
    [[nodiscard]] Range beforeRounding(double nbRoundings) const {
        return isInteger() ? own() : widened(own(), nbRoundings);
    }
    [[nodiscard]] Range operator[](std::size_t k) const { return narrowing_.rangeOf(indexOf(k)); }
    [[nodiscard]] Range rangeOf(ExpressionIndex e) const { return narrowing_.rangeOf(e); }
    [[nodiscard]] bool areExactIntegers() const {
        return RangeOperands(model(), expression(), narrowing_.ranges()).areExactIntegers();
    }

    void restrict(std::size_t k, double lower, double upper) const {
        narrowing_.restrict(indexOf(k), lower, upper);
    }
    void restrict(std::size_t k, const Range& r) const { restrict(k, r.lower, r.upper); }
    /// An expression that is no operand itself: an element of an array.
    void restrictElement(ExpressionIndex e, const Range& r) const {
        narrowing_.restrict(e, r.lower, r.upper);
    }
    /// Operand k is not NaN; nothing else is learnt.
    void restrictToNumber(std::size_t k) const { restrict(k, -infinity, infinity); }
    /// Operand k is 0 (it may be NaN where the operator does not mind).
    void restrictToZero(std::size_t k) const { restrict(k, 0.0, 0.0); }
    void restrictToTrue(std::size_t k) const {
        engine::restrictToTrue(model(), indexOf(k), narrowing_);
    }
    /// The absolute value of operand k lies in `magnitude`.
    void restrictMagnitude(std::size_t k, const Range& magnitude) const {
        restrict(k, -magnitude.upper, magnitude.upper);
        // Between the two branches there is nothing; outside one of them only the other is left.
        if (magnitude.lower <= 0.0) return;
        const Range x = (*this)[k];
        if (x.lower > -magnitude.lower) restrict(k, magnitude.lower, infinity);
        if (x.upper < magnitude.lower) restrict(k, -infinity, -magnitude.lower);
    }

private:
    Narrowing& narrowing_;
};

}  // namespace engine
