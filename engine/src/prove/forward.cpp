#include "prove/forward.hpp"

#include <numbers>

namespace engine {
namespace {

constexpr Range anything{-infinity, infinity, true};
/// Errors of the mathematical library's functions, generously, in roundings.
constexpr double nbFunctionRoundings = 8.0;

/// The operands' ranges, seen through their indices.
class Operands {
public:
    Operands(std::span<const ExpressionIndex> indices, const RangeStore& ranges)
        : indices_(indices), ranges_(ranges) {}
    [[nodiscard]] std::size_t size() const { return indices_.size(); }
    [[nodiscard]] Range operator[](std::size_t k) const { return ranges_.of(indices_[k]); }
    [[nodiscard]] ExpressionIndex indexOf(std::size_t k) const { return indices_[k]; }
    [[nodiscard]] bool someIsEmpty() const {
        return std::any_of(indices_.begin(), indices_.end(),
                           [this](ExpressionIndex e) { return ranges_.of(e).isEmpty(); });
    }

private:
    std::span<const ExpressionIndex> indices_;
    const RangeStore& ranges_;
};

Range sum(const Operands& x) {
    RangeSum total;
    for (std::size_t k = 0; k < x.size(); ++k) total.add(x[k]);
    return total.total();
}

Range negated(const Range& r) {
    return {-r.upper, -r.lower, r.mayBeNan};
}

Range difference(const Range& a, const Range& b) {
    RangeSum total;
    total.add(a);
    total.add(negated(b));
    return total.total();
}

Range absolute(const Range& r) {
    if (r.lower >= 0.0 || r.isEmpty()) return r;
    if (r.upper <= 0.0) return negated(r);
    return {0.0, std::max(-r.lower, r.upper), r.mayBeNan};
}

Range square(const Range& r) {
    const Range a = absolute(r);
    return {times(a.lower, a.lower), times(a.upper, a.upper), a.mayBeNan};
}

Range product(const Operands& x) {
    Range result{1.0, 1.0, false};
    std::size_t k = 0;
    if (x.size() >= 2 && x.indexOf(0) == x.indexOf(1)) {
        result = square(x[0]);
        k = 2;
    }
    for (; k < x.size(); ++k) {
        result = engine::product(result, x[k]);
        // Exact integers beyond 53 bits are rounded once by the judge, here at every step.
        if (result.lower < -largestExactInteger || result.upper > largestExactInteger) {
            result = widened(result, 2.0);
        }
    }
    return result;
}

Range extreme(const Operands& x, bool largest) {
    Range result = x[0];
    for (std::size_t k = 1; k < x.size(); ++k) {
        const auto pick = [largest](double a, double b) {
            return largest ? std::max(a, b) : std::min(a, b);
        };
        result = {pick(result.lower, x[k].lower), pick(result.upper, x[k].upper),
                  result.mayBeNan || x[k].mayBeNan};
    }
    return result;
}

Range truth(bool canBeFalse, bool canBeTrue, bool mayBeNan) {
    return {canBeFalse ? 0.0 : 1.0, canBeTrue ? 1.0 : 0.0, mayBeNan};
}

Range negation(const Range& r) {
    return truth(/*canBeFalse=*/!r.cannotBeTrue(), /*canBeTrue=*/r.contains(0.0), r.mayBeNan);
}

/// The truth of "a <= b".
Range atMost(const Range& a, const Range& b, bool exact) {
    return truth(/*canBeFalse=*/a.upper > b.lower,
                 /*canBeTrue=*/a.lower <= toleratedAbove(b.upper, exact), a.mayBeNan || b.mayBeNan);
}

Range equal(const Range& a, const Range& b, bool exact) {
    const bool same = a.isPoint() && b.isPoint() && a.lower == b.lower;
    const bool canMeet =
        a.lower <= toleratedAbove(b.upper, exact) && b.lower <= toleratedAbove(a.upper, exact);
    return truth(/*canBeFalse=*/!same, /*canBeTrue=*/canMeet, a.mayBeNan || b.mayBeNan);
}

Range relation(ls_operator op, const Range& a, const Range& b, bool exact) {
    if (a.isEmpty() || b.isEmpty()) return {infinity, -infinity, a.mayBeNan || b.mayBeNan};
    switch (op) {
        case LS_OP_EQ:
            return equal(a, b, exact);
        case LS_OP_NEQ:
            return negation(equal(a, b, exact));
        case LS_OP_LEQ:
            return atMost(a, b, exact);
        case LS_OP_GT:
            return negation(atMost(a, b, exact));
        case LS_OP_GEQ:
            return atMost(b, a, exact);
        default:  // LS_OP_LT
            return negation(atMost(b, a, exact));
    }
}

/// `and` (absorbing false) and `or` (absorbing true): an absorbing operand hides a NaN.
Range junction(const Operands& x, bool absorbing) {
    bool someCanAbsorb = false;
    bool someCannotBeNeutral = false;
    bool mayBeNan = false;
    for (std::size_t k = 0; k < x.size(); ++k) {
        const bool mustAbsorb = absorbing ? x[k].mustBeTrue() : x[k].mustBeZero();
        if (mustAbsorb) return truth(!absorbing, absorbing, false);
        const bool mustBeNeutral = absorbing ? x[k].cannotBeTrue() : !x[k].contains(0.0);
        const bool canBeNeutral = absorbing ? x[k].contains(0.0) : !x[k].cannotBeTrue();
        someCanAbsorb = someCanAbsorb || !mustBeNeutral;
        someCannotBeNeutral = someCannotBeNeutral || !canBeNeutral;
        mayBeNan = mayBeNan || x[k].mayBeNan;
    }
    const bool canBeNeutral = !someCannotBeNeutral;
    return absorbing ? truth(canBeNeutral, someCanAbsorb, mayBeNan)
                     : truth(someCanAbsorb, canBeNeutral, mayBeNan);
}

Range parity(const Operands& x) {
    bool known = true;
    bool odd = false;
    bool mayBeNan = false;
    for (std::size_t k = 0; k < x.size(); ++k) {
        mayBeNan = mayBeNan || x[k].mayBeNan;
        known = known && (x[k].cannotBeTrue() || !x[k].contains(0.0));
        odd = odd != !x[k].cannotBeTrue();
    }
    return truth(!known || !odd, !known || odd, mayBeNan);
}

Range choice(const Range& condition, const Range& ifTrue, const Range& ifFalse) {
    Range result = hull(ifTrue, ifFalse);
    if (condition.cannotBeTrue()) {
        result = ifFalse;
    } else if (!condition.contains(0.0)) {
        result = ifTrue;
    }
    result.mayBeNan = result.mayBeNan || condition.mayBeNan;
    return result;
}

/// The remainder has the dividend's sign and is smaller than the divisor.
Range remainder(const Range& a, const Range& b, bool integers) {
    const double largest = absolute(b).upper - (integers ? 1.0 : 0.0);
    Range r{a.lower >= 0.0 ? 0.0 : std::max(a.lower, -largest),
            a.upper <= 0.0 ? 0.0 : std::min(a.upper, largest), a.mayBeNan || b.mayBeNan};
    r.mayBeNan = r.mayBeNan || b.contains(0.0) || std::isinf(a.lower) || std::isinf(a.upper);
    return widened(r, 1.0);
}

Range monotone(const Range& r, double (*f)(double), double nbRoundings) {
    if (r.isEmpty()) return r;
    return widened({f(r.lower), f(r.upper), r.mayBeNan}, nbRoundings);
}

Range rounding(const Range& r, double (*rule)(double)) {
    return {rule(r.lower), rule(r.upper), r.mayBeNan};
}

/// `r` without the part below 0, where the function has no value.
Range domainOfRoot(Range r) {
    r.mayBeNan = r.mayBeNan || r.lower < 0.0;
    r.lower = std::max(r.lower, 0.0);
    return r;
}

Range root(const Range& r) {
    const Range x = domainOfRoot(r);
    if (x.isEmpty()) return x;
    return {std::sqrt(x.lower), std::sqrt(x.upper), x.mayBeNan};
}

Range logarithm(const Range& r) {
    Range x = domainOfRoot(r);
    x.mayBeNan = x.mayBeNan || r.lower <= 0.0;
    if (x.upper <= 0.0) return {infinity, -infinity, x.mayBeNan};
    return monotone(
        x, [](double v) { return std::log(v); }, nbFunctionRoundings);
}

Range exponential(const Range& r) {
    Range x = monotone(
        r, [](double v) { return std::exp(v); }, nbFunctionRoundings);
    if (!x.isEmpty()) x.lower = std::max(x.lower, 0.0);
    return x;
}

/// base^n for a constant whole exponent.
Range wholePower(const Range& base, double n) {
    const bool isEven = std::fmod(n, 2.0) == 0.0;
    const Range x = isEven ? absolute(base) : base;
    if (n < 0.0 && x.contains(0.0) && !isEven) return {-infinity, infinity, x.mayBeNan};
    Range p{std::pow(x.lower, n), std::pow(x.upper, n), x.mayBeNan};
    if (n < 0.0) {
        // Decreasing; a signed zero has no say in which infinity an even power becomes.
        std::swap(p.lower, p.upper);
        if (x.contains(0.0)) p.upper = infinity;
    }
    return widened(p, nbFunctionRoundings);
}

Range power(const Range& base, const Range& exponent) {
    // An infinite exponent is no power at all.
    if (base.mayBeNan || exponent.mayBeNan) return anything;
    if (std::isinf(exponent.lower) || std::isinf(exponent.upper)) return anything;
    if (exponent.isPoint() && exponent.lower == std::rint(exponent.lower)) {
        return wholePower(base, exponent.lower);
    }
    Range x = base;
    if (x.lower < 0.0) {
        if (!exponent.isPoint()) return anything;
        x = domainOfRoot(base);
        // An infinite base has powers even below zero.
        if (x.isEmpty() || std::isinf(base.lower)) return anything;
    }
    // Monotone in each argument: the extremes are at the corners.
    const double corners[] = {std::pow(x.lower, exponent.lower), std::pow(x.lower, exponent.upper),
                              std::pow(x.upper, exponent.lower), std::pow(x.upper, exponent.upper)};
    Range p{*std::min_element(std::begin(corners), std::end(corners)),
            *std::max_element(std::begin(corners), std::end(corners)), x.mayBeNan};
    return widened(p, nbFunctionRoundings);
}

/// cos over `r`; `shift` turns it into sin.
Range cosine(const Range& r, double shift) {
    constexpr double pi = std::numbers::pi;
    Range result{-1.0, 1.0, r.mayBeNan || std::isinf(r.lower) || std::isinf(r.upper)};
    const double magnitude = std::max(std::fabs(r.lower), std::fabs(r.upper));
    if (r.isEmpty() || !(magnitude < 1e6) || r.upper - r.lower >= 2.0 * pi) return result;
    // Whether a multiple of pi lies inside, with a margin for the rounding of the argument.
    const double margin = 1e-8;
    const double first = std::ceil((r.lower - shift - margin) / pi);
    const double last = std::floor((r.upper - shift + margin) / pi);
    const double a = std::cos(r.lower - shift);
    const double b = std::cos(r.upper - shift);
    result.lower = std::min(a, b) - margin;
    result.upper = std::max(a, b) + margin;
    for (double k = first; k <= last; k += 1.0) {
        if (std::fmod(std::fabs(k), 2.0) == 0.0) {
            result.upper = 1.0;
        } else {
            result.lower = -1.0;
        }
    }
    return {std::max(result.lower, -1.0), std::min(result.upper, 1.0), result.mayBeNan};
}

Range tangent(const Range& r) {
    if (!r.isPoint() || !std::isfinite(r.lower)) return anything;
    return widened({std::tan(r.lower), std::tan(r.lower), r.mayBeNan}, nbFunctionRoundings);
}

Range elementAt(const ClosedModel& model, const Operands& x, const RangeStore& ranges) {
    const Operands array(model.operandsOf(x.indexOf(0)), ranges);
    const auto size = static_cast<double>(array.size());
    const Range index = x[1];
    Range result = emptyRange;
    for (double k = std::max(0.0, std::trunc(index.lower));
         k < size && k <= std::trunc(index.upper); k += 1.0) {
        result = hull(result, array[static_cast<std::size_t>(k)]);
    }
    result.mayBeNan = result.mayBeNan || index.mayBeNan || index.lower < 0.0 || index.upper >= size;
    return result;
}

Range scalarProduct(const ClosedModel& model, const Operands& x, const RangeStore& ranges) {
    const Operands a(model.operandsOf(x.indexOf(0)), ranges);
    const Operands b(model.operandsOf(x.indexOf(1)), ranges);
    if (a.size() != b.size()) return anything;
    RangeSum total;
    for (std::size_t k = 0; k < a.size(); ++k) total.add(engine::product(a[k], b[k]));
    return total.total();
}

Range functionImage(ls_operator op, const Range& x) {
    switch (op) {
        case LS_OP_NOT:
            return negation(x);
        case LS_OP_ABS:
            return absolute(x);
        case LS_OP_CEIL:
            return rounding(x, [](double v) { return std::ceil(v); });
        case LS_OP_FLOOR:
            return rounding(x, [](double v) { return std::floor(v); });
        case LS_OP_ROUND:
            return rounding(x, [](double v) { return std::round(v); });
        case LS_OP_SQRT:
            return root(x);
        case LS_OP_LOG:
            return logarithm(x);
        case LS_OP_EXP:
            return exponential(x);
        case LS_OP_COS:
            return cosine(x, 0.0);
        case LS_OP_SIN:
            return cosine(x, std::numbers::pi / 2.0);
        case LS_OP_TAN:
            return tangent(x);
        default:
            return anything;
    }
}

/// A NaN operand makes the operator NaN; not so where an operand may be out of play.
bool isStrict(ls_operator op) {
    return op != LS_OP_AND && op != LS_OP_OR && op != LS_OP_IF && op != LS_OP_POW &&
           op != LS_OP_ARRAY && op != LS_OP_AT;
}

bool isSmallInteger(const ClosedModel& model, ExpressionIndex e, const Range& r) {
    return model.isDouble[static_cast<std::size_t>(e)] == 0 && r.lower > -largestExactInteger &&
           r.upper < largestExactInteger;
}

}  // namespace

bool isExactRelation(const ClosedModel& model, ExpressionIndex relation, const RangeStore& ranges) {
    const auto sides = model.operandsOf(relation);
    return std::all_of(sides.begin(), sides.end(), [&](ExpressionIndex side) {
        return isSmallInteger(model, side, ranges.of(side));
    });
}

Range imageOf(const ClosedModel& model, ExpressionIndex e, const RangeStore& ranges) {
    const Operands x(model.operandsOf(e), ranges);
    const ls_operator op = model.operatorOf(e);
    if (isStrict(op) && x.someIsEmpty()) return {infinity, -infinity, true};
    switch (op) {
        case LS_OP_SUM:
            return sum(x);
        case LS_OP_SUB:
            return difference(x[0], x[1]);
        case LS_OP_PROD:
            return product(x);
        case LS_OP_MAX:
            return extreme(x, /*largest=*/true);
        case LS_OP_MIN:
            return extreme(x, /*largest=*/false);
        case LS_OP_EQ:
        case LS_OP_NEQ:
        case LS_OP_GEQ:
        case LS_OP_LEQ:
        case LS_OP_GT:
        case LS_OP_LT:
            return relation(op, x[0], x[1], isExactRelation(model, e, ranges));
        case LS_OP_IF:
            return choice(x[0], x[1], x[2]);
        case LS_OP_AND:
            return junction(x, /*absorbing=*/false);
        case LS_OP_OR:
            return junction(x, /*absorbing=*/true);
        case LS_OP_XOR:
            return parity(x);
        case LS_OP_DIST:
            return absolute(difference(x[0], x[1]));
        case LS_OP_DIV:
            return quotient(x[0], x[1]);
        case LS_OP_MOD:
            return remainder(x[0], x[1], model.isDouble[static_cast<std::size_t>(e)] == 0);
        case LS_OP_ARRAY:
            return {0.0, 0.0, false};
        case LS_OP_AT:
            return elementAt(model, x, ranges);
        case LS_OP_SCALARPROD:
            return scalarProduct(model, x, ranges);
        case LS_OP_POW:
            return power(x[0], x[1]);
        default:
            return functionImage(op, x[0]);
    }
}

}  // namespace engine
