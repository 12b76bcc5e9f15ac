#include "prove/backward.hpp"

#include "prove/forward.hpp"

namespace engine {
namespace {

/// One step of narrowing: the operator's range, its operands and theirs.
class Step {
public:
    Step(const ClosedModel& model, ExpressionIndex e, Narrowing& narrowing)
        : model_(model), e_(e), operands_(model.operandsOf(e)), narrowing_(narrowing) {}

    void run();

private:
    [[nodiscard]] Range own() const { return narrowing_.rangeOf(e_); }
    /// The values that the exact operation may have had before the judge's rounding.
    [[nodiscard]] Range beforeRounding(double nbRoundings) const {
        return model_.isDouble[static_cast<std::size_t>(e_)] != 0 ? widened(own(), nbRoundings)
                                                                  : own();
    }
    [[nodiscard]] Range range(std::size_t k) const { return narrowing_.rangeOf(operands_[k]); }
    void restrict(std::size_t k, double lower, double upper) {
        narrowing_.restrict(operands_[k], lower, upper);
    }
    void restrict(std::size_t k, const Range& r) { restrict(k, r.lower, r.upper); }
    /// Operand k is not NaN; nothing else is learnt.
    void restrictToNumber(std::size_t k) { restrict(k, -infinity, infinity); }
    /// Operand k is 0 (it may be NaN where the operator does not mind).
    void restrictToZero(std::size_t k) { restrict(k, 0.0, 0.0); }
    void restrictToTrue(std::size_t k) { engine::restrictToTrue(model_, operands_[k], narrowing_); }

    void sum();
    void difference();
    void product();
    void productOfSame();
    void extreme(bool largest);
    void relation();
    void orderedPair(std::size_t smaller, std::size_t larger, bool strict);
    void equalPair();
    void differentPair();
    void choice();
    void negation();
    void junction(bool absorbing);
    void parity();
    void absolute(const Range& magnitude, std::size_t k);
    void distance();
    void quotient();
    void elementAt();
    void power();
    void unary();
    void exponential();
    void mapBounds(double (*inverse)(double));

    const ClosedModel& model_;
    ExpressionIndex e_;
    std::span<const ExpressionIndex> operands_;
    Narrowing& narrowing_;
};

void Step::sum() {
    RangeSum total;
    for (std::size_t k = 0; k < operands_.size(); ++k) total.add(range(k));
    const Range whole = beforeRounding(2.0);
    for (std::size_t k = 0; k < operands_.size(); ++k) {
        // Ranges narrowed on the way make `rest` wider than it need be, never wrong: an operand
        // that occurs twice is taken away with the range it was added with or a narrower one.
        const Range before = range(k);
        const Range rest = total.without(before);
        const double lower = whole.lower - rest.upper;
        const double upper = whole.upper - rest.lower;
        restrict(k, std::isnan(lower) ? -infinity : below(lower),
                 std::isnan(upper) ? infinity : above(upper));
    }
}

void Step::difference() {
    const Range whole = beforeRounding(2.0);
    const Range a = range(0);
    const Range b = range(1);
    RangeSum left;  // a = e + b
    left.add(whole);
    left.add(b);
    restrict(0, left.total());
    RangeSum right;  // b = a - e
    right.add(a);
    right.add({-whole.upper, -whole.lower, false});
    restrict(1, right.total());
}

void Step::productOfSame() {
    Range rest{1.0, 1.0, false};
    for (std::size_t k = 2; k < operands_.size(); ++k) rest = engine::product(rest, range(k));
    const Range square = widened(engine::quotient(widened(own(), 8.0), widened(rest, 8.0)), 2.0);
    if (square.mayBeNan) return restrictToNumber(0);
    if (square.upper < 0.0) return restrict(0, emptyRange);
    const Range root{std::sqrt(std::max(0.0, square.lower)), std::sqrt(square.upper), false};
    absolute(widened(root, 8.0), 0);
}

void Step::product() {
    const std::size_t n = operands_.size();
    if (n >= 2 && operands_[0] == operands_[1]) {
        productOfSame();
        for (std::size_t k = 2; k < n; ++k) restrictToNumber(k);
        return;
    }
    // rest of k = (product of those before) * (product of those after)
    std::vector<Range> after(n + 1, Range{1.0, 1.0, false});
    for (std::size_t k = n; k-- > 0;) after[k] = engine::product(after[k + 1], range(k));
    Range before{1.0, 1.0, false};
    for (std::size_t k = 0; k < n; ++k) {
        const Range mine = range(k);
        const Range rest = engine::product(before, after[k + 1]);
        before = engine::product(before, mine);
        const double least = std::min(std::fabs(rest.lower), std::fabs(rest.upper));
        // Far from 1 an underflow of a partial product could hide in the quotient.
        const bool usable = !rest.contains(0.0) && least > 1e-100;
        const auto roundings = static_cast<double>(2 * n + 2);
        const Range q =
            usable ? widened(engine::quotient(widened(own(), roundings), widened(rest, roundings)),
                             2.0)
                   : Range{};
        restrict(k, q.mayBeNan ? Range{} : q);
    }
}

void Step::extreme(bool largest) {
    const Range whole = own();
    const std::size_t n = operands_.size();
    std::size_t nbAble = 0;
    std::size_t able = 0;
    for (std::size_t k = 0; k < n; ++k) {
        if (largest) {
            restrict(k, -infinity, whole.upper);
        } else {
            restrict(k, whole.lower, infinity);
        }
        const bool reaches =
            largest ? range(k).upper >= whole.lower : range(k).lower <= whole.upper;
        if (reaches) {
            ++nbAble;
            able = k;
        }
    }
    // The only operand that can be the extreme one is it.
    if (nbAble == 1) restrict(able, whole.lower, whole.upper);
}

void Step::orderedPair(std::size_t smaller, std::size_t larger, bool strict) {
    const bool exact = isExactRelation(model_, e_, narrowing_.ranges());
    const double step = strict && exact ? 1.0 : 0.0;
    // A strict relation excludes at least what its non-strict opposite accepts without tolerance.
    const bool noTolerance = exact || strict;
    restrict(smaller, -infinity, toleratedAbove(range(larger).upper, noTolerance) - step);
    restrict(larger, toleratedBelow(range(smaller).lower, noTolerance) + step, infinity);
}

void Step::equalPair() {
    orderedPair(0, 1, /*strict=*/false);
    orderedPair(1, 0, /*strict=*/false);
}

void Step::differentPair() {
    restrictToNumber(0);
    restrictToNumber(1);
    if (!isExactRelation(model_, e_, narrowing_.ranges())) return;
    for (std::size_t k = 0; k < 2; ++k) {
        const Range other = range(1 - k);
        if (!other.isPoint()) continue;
        const Range mine = range(k);
        restrict(k, mine.lower == other.lower ? mine.lower + 1.0 : mine.lower,
                 mine.upper == other.upper ? mine.upper - 1.0 : mine.upper);
    }
}

void Step::relation() {
    const bool holds = own().mustBeTrue();
    if (!holds && !own().mustBeZero()) {
        restrictToNumber(0);
        restrictToNumber(1);
        return;
    }
    switch (model_.operatorOf(e_)) {
        case LS_OP_EQ:
            return holds ? equalPair() : differentPair();
        case LS_OP_NEQ:
            return holds ? differentPair() : equalPair();
        case LS_OP_LEQ:
            return holds ? orderedPair(0, 1, false) : orderedPair(1, 0, true);
        case LS_OP_GT:
            return holds ? orderedPair(1, 0, true) : orderedPair(0, 1, false);
        case LS_OP_GEQ:
            return holds ? orderedPair(1, 0, false) : orderedPair(0, 1, true);
        default:  // LS_OP_LT
            return holds ? orderedPair(0, 1, true) : orderedPair(1, 0, false);
    }
}

void Step::choice() {
    restrictToNumber(0);
    const Range whole = own();
    const auto fits = [&](std::size_t k) {
        return range(k).lower <= whole.upper && range(k).upper >= whole.lower;
    };
    if (!fits(1)) restrictToZero(0);
    if (!fits(2)) restrictToTrue(0);
    if (range(0).mustBeTrue()) restrict(1, whole);
    if (range(0).mustBeZero()) restrict(2, whole);
}

void Step::negation() {
    restrictToNumber(0);
    if (own().mustBeTrue()) restrictToZero(0);
    if (own().mustBeZero()) restrictToTrue(0);
}

void Step::junction(bool absorbing) {
    const auto makeNeutral = [&](std::size_t k) {
        absorbing ? restrictToZero(k) : restrictToTrue(k);
    };
    const bool isNeutral = absorbing ? own().mustBeZero() : own().mustBeTrue();
    if (isNeutral) {
        for (std::size_t k = 0; k < operands_.size(); ++k) makeNeutral(k);
        return;
    }
    const bool isAbsorbed = absorbing ? own().mustBeTrue() : own().mustBeZero();
    if (!isAbsorbed) return;
    // The only operand that can absorb does.
    std::size_t nbAble = 0;
    std::size_t able = 0;
    for (std::size_t k = 0; k < operands_.size(); ++k) {
        if (absorbing ? range(k).cannotBeTrue() : !range(k).contains(0.0)) continue;
        ++nbAble;
        able = k;
    }
    if (nbAble == 1) absorbing ? restrictToTrue(able) : restrictToZero(able);
}

void Step::parity() {
    std::size_t nbOpen = 0;
    std::size_t open = 0;
    bool odd = false;
    for (std::size_t k = 0; k < operands_.size(); ++k) {
        restrictToNumber(k);
        if (range(k).mustBeTrue()) {
            odd = !odd;
        } else if (!range(k).mustBeZero()) {
            ++nbOpen;
            open = k;
        }
    }
    const bool known = own().mustBeTrue() || own().mustBeZero();
    if (nbOpen != 1 || !known) return;
    own().mustBeTrue() != odd ? restrictToTrue(open) : restrictToZero(open);
}

/// The absolute value of operand k lies in `magnitude`.
void Step::absolute(const Range& magnitude, std::size_t k) {
    restrict(k, -magnitude.upper, magnitude.upper);
    // Between the two branches there is nothing; outside one of them only the other is left.
    if (magnitude.lower <= 0.0) return;
    const Range x = range(k);
    if (x.lower > -magnitude.lower) restrict(k, magnitude.lower, infinity);
    if (x.upper < magnitude.lower) restrict(k, -infinity, -magnitude.lower);
}

void Step::distance() {
    const double reach = own().upper;
    const Range a = range(0);
    const Range b = range(1);
    // Widened by the rounding of the difference, which is relative to the result.
    const double slack = above(reach * (1.0 + 4.0 * DBL_EPSILON));
    restrict(0, below(b.lower - slack), above(b.upper + slack));
    restrict(1, below(a.lower - slack), above(a.upper + slack));
}

void Step::quotient() {
    const Range whole = widened(own(), 4.0);
    const Range a = range(0);
    const Range b = range(1);
    if (!std::isinf(b.lower) && !std::isinf(b.upper)) {
        restrict(0, widened(engine::product(whole, b), 4.0));
    } else {
        restrictToNumber(0);
    }
    const bool usable = !whole.contains(0.0) && std::isfinite(a.lower) && std::isfinite(a.upper);
    restrict(1, usable ? widened(engine::quotient(a, whole), 4.0) : Range{});
    // The divisor is not 0.
    if (range(1).mustBeZero()) restrict(1, emptyRange);
}

void Step::elementAt() {
    const auto array = model_.operandsOf(operands_[0]);
    const Range whole = own();
    restrict(1, 0.0, static_cast<double>(array.size()));
    const auto fits = [&](double k) {
        const auto position = static_cast<std::size_t>(std::trunc(k));
        if (position >= array.size()) return false;
        const Range r = narrowing_.rangeOf(array[position]);
        return r.lower <= whole.upper && r.upper >= whole.lower;
    };
    Range index = range(1);
    while (!index.isEmpty() && !fits(index.lower)) index.lower = std::trunc(index.lower) + 1.0;
    while (!index.isEmpty() && !fits(index.upper)) index.upper = below(std::trunc(index.upper));
    restrict(1, index);
    if (index.isEmpty() || std::trunc(index.lower) != std::trunc(index.upper)) return;
    narrowing_.restrict(array[static_cast<std::size_t>(std::trunc(index.lower))], whole.lower,
                        whole.upper);
}

/// The operand, not negative, lies between the inverse images of the bounds.
void Step::mapBounds(double (*inverse)(double)) {
    const Range image = widened(own(), 16.0);
    const Range x = widened({inverse(image.lower), inverse(image.upper), false}, 16.0);
    restrict(0, std::max(0.0, x.lower), x.upper);
}

/// Inverse of a power with a constant positive exponent.
void Step::power() {
    const Range exponent = range(1);
    const double n = exponent.lower;
    if (range(0).mayBeNan || !exponent.isPoint() || !(n > 0.0) || std::isinf(n)) return;
    const Range image = widened(own(), 16.0);
    const bool isWhole = n == std::rint(n);
    // The rounding of 1 / n is magnified by the logarithm of the result, 710 at most.
    const auto rootOf = [n](double v) { return std::copysign(std::pow(std::fabs(v), 1.0 / n), v); };
    if (isWhole && std::fmod(n, 2.0) == 1.0) {
        return restrict(0, widened({rootOf(image.lower), rootOf(image.upper), false}, 1024.0));
    }
    if (image.upper < 0.0) return restrict(0, emptyRange);
    const Range root =
        widened({rootOf(std::max(0.0, image.lower)), rootOf(image.upper), false}, 1024.0);
    isWhole ? absolute(root, 0) : restrict(0, root);
}

void Step::exponential() {
    const Range image = widened(own(), 16.0);
    if (image.upper < 0.0) return restrict(0, emptyRange);
    // Anything very negative underflows to the same tiny results.
    constexpr double least = 1e-300;
    const Range x{image.lower <= least ? -infinity : std::log(image.lower),
                  std::log(std::max(image.upper, least)), false};
    restrict(0, widened(x, 16.0));
}

void Step::unary() {
    const Range whole = own();
    switch (model_.operatorOf(e_)) {
        case LS_OP_CEIL:
            return restrict(0, whole.lower - 1.0, whole.upper);
        case LS_OP_FLOOR:
            return restrict(0, whole.lower, whole.upper + 1.0);
        case LS_OP_ROUND:
            return restrict(0, below(whole.lower - 0.5), above(whole.upper + 0.5));
        case LS_OP_SQRT:
            if (whole.upper < 0.0) return restrict(0, emptyRange);
            return mapBounds([](double v) { return v <= 0.0 ? 0.0 : v * v; });
        case LS_OP_LOG:
            return mapBounds([](double v) { return std::exp(v); });
        case LS_OP_EXP:
            return exponential();
        default:
            restrictToNumber(0);
    }
}

void Step::run() {
    switch (model_.operatorOf(e_)) {
        case LS_OP_SUM:
            return sum();
        case LS_OP_SUB:
            return difference();
        case LS_OP_PROD:
            return product();
        case LS_OP_MAX:
            return extreme(/*largest=*/true);
        case LS_OP_MIN:
            return extreme(/*largest=*/false);
        case LS_OP_EQ:
        case LS_OP_NEQ:
        case LS_OP_GEQ:
        case LS_OP_LEQ:
        case LS_OP_GT:
        case LS_OP_LT:
            return relation();
        case LS_OP_IF:
            return choice();
        case LS_OP_NOT:
            return negation();
        case LS_OP_AND:
            return junction(/*absorbing=*/false);
        case LS_OP_OR:
            return junction(/*absorbing=*/true);
        case LS_OP_XOR:
            return parity();
        case LS_OP_ABS:
            return absolute(own(), 0);
        case LS_OP_DIST:
            return distance();
        case LS_OP_DIV:
            return quotient();
        case LS_OP_AT:
            return elementAt();
        case LS_OP_POW:
            return power();
        case LS_OP_MOD:
            restrictToNumber(0);
            return restrictToNumber(1);
        case LS_OP_ARRAY:
        case LS_OP_SCALARPROD:
            return;
        default:
            return unary();
    }
}

}  // namespace

void narrowOperands(const ClosedModel& model, ExpressionIndex e, Narrowing& narrowing) {
    const Range own = narrowing.rangeOf(e);
    // An infinite result may be an overflow: its operands need not be infinite.
    if (own.lower == infinity || own.upper == -infinity) return;
    Step(model, e, narrowing).run();
}

void restrictToTrue(const ClosedModel& model, ExpressionIndex e, Narrowing& narrowing) {
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

}  // namespace engine
