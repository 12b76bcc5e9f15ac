#include "evaluate/operators.hpp"

#include <bit>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <limits>

#include "evaluate/exact_sum.hpp"

namespace engine {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr Value notANumber = Value::ofDouble(nan);

/// 0 to a negative power: a NaN that a product with an exact 0 forgives. A bit pattern of its own,
/// so that a change from one NaN to the other counts as a change.
constexpr std::uint64_t poleBits = std::bit_cast<std::uint64_t>(nan) + 1;
constexpr Value pole = Value::ofDouble(std::bit_cast<double>(poleBits));

bool isNan(Value v) {
    return !v.isInt() && std::isnan(v.asDouble());
}
bool isPole(Value v) {
    return !v.isInt() && std::bit_cast<std::uint64_t>(v.asDouble()) == poleBits;
}
/// No number, and no pole either.
bool spoilsProducts(Value v) {
    return isNan(v) && !isPole(v);
}
Value ofBool(bool b) {
    return Value::ofInt(b ? 1 : 0);
}

/// The operands' values, seen through their indices.
class Operands {
public:
    Operands(std::span<const ExpressionIndex> indices, std::span<const Value> values)
        : indices_(indices), values_(values) {}
    [[nodiscard]] std::size_t size() const { return indices_.size(); }
    [[nodiscard]] Value operator[](std::size_t k) const {
        return values_[static_cast<std::size_t>(indices_[k])];
    }
    [[nodiscard]] ExpressionIndex indexOf(std::size_t k) const { return indices_[k]; }

private:
    std::span<const ExpressionIndex> indices_;
    std::span<const Value> values_;
};

Value sum(const Operands& x) {
    ExactSum total;
    for (std::size_t k = 0; k < x.size(); ++k) total.add(x[k]);
    return total.total();
}

Value product(const Operands& x) {
    bool hasZero = false;
    bool allIntegers = true;
    Value result = Value::ofInt(1);
    for (std::size_t k = 0; k < x.size(); ++k) {
        if (spoilsProducts(x[k])) return notANumber;
        hasZero = hasZero || (!x[k].isTrue() && !isPole(x[k]));
        allIntegers = allIntegers && x[k].isInt();
        if (!hasZero) result = multiply(result, x[k]);
    }
    if (hasZero) return allIntegers ? Value::ofInt(0) : Value::ofDouble(0.0);
    return result;
}

/// The largest (direction 1) or smallest (-1) operand.
Value extreme(const Operands& x, int direction) {
    Value best = x[0];
    for (std::size_t k = 1; k < x.size() && !isNan(best); ++k) {
        if (isNan(x[k]) || compare(x[k], best) == direction) best = x[k];
    }
    return best;
}

/// `and` (absorbing false) or `or` (absorbing true).
Value junction(const Operands& x, bool absorbing) {
    bool sawNan = false;
    for (std::size_t k = 0; k < x.size(); ++k) {
        if (isNan(x[k])) {
            sawNan = true;
        } else if (x[k].isTrue() == absorbing) {
            return ofBool(absorbing);
        }
    }
    return sawNan ? notANumber : ofBool(!absorbing);
}

Value parity(const Operands& x) {
    bool odd = false;
    for (std::size_t k = 0; k < x.size(); ++k) {
        if (isNan(x[k])) return notANumber;
        odd = odd != x[k].isTrue();
    }
    return ofBool(odd);
}

Value choose(const Operands& x) {
    if (isNan(x[0])) return notANumber;
    return x[0].isTrue() ? x[1] : x[2];
}

Value absolute(Value v) {
    if (!v.isInt()) return Value::ofDouble(std::fabs(v.asDouble()));
    return v.asInt() < 0 ? subtract(Value::ofInt(0), v) : v;
}

Value divide(Value a, Value b) {
    const double divisor = b.asDouble();
    if (divisor == 0.0) return notANumber;
    return Value::ofDouble(a.asDouble() / divisor);
}

Value remainder(Value a, Value b) {
    if (!b.isTrue()) return notANumber;
    if (!a.isInt() || !b.isInt()) return Value::ofDouble(std::fmod(a.asDouble(), b.asDouble()));
    // The smallest integer divided by -1 has no 64-bit quotient.
    return Value::ofInt(b.asInt() == -1 ? 0 : a.asInt() % b.asInt());
}

/// An integral double as an integer when it fits.
Value integral(double d) {
    constexpr double bound = 9223372036854775808.0;  // 2^63
    if (d >= -bound && d < bound) return Value::ofInt(static_cast<std::int64_t>(d));
    return Value::ofDouble(d);
}

Value roundWith(Value v, double (*rule)(double)) {
    return v.isInt() ? v : integral(rule(v.asDouble()));
}

Value power(Value base, Value exponent) {
    // The library's pow knows numbers to which what NaN stands for makes no difference.
    if (isNan(base) || isNan(exponent)) return notANumber;
    const double result = std::pow(base.asDouble(), exponent.asDouble());
    return std::isinf(result) && !base.isTrue() ? pole : Value::ofDouble(result);
}

double logarithm(double d) {
    return d > 0.0 ? std::log(d) : nan;
}

Value elementAt(const ClosedModel& model, const Operands& x, std::span<const Value> values) {
    const Operands array(model.operandsOf(x.indexOf(0)), values);
    // Written so that NaN is outside, too.
    const double index = x[1].asDouble();
    if (!(index >= 0.0 && index < static_cast<double>(array.size()))) return notANumber;
    return array[static_cast<std::size_t>(index)];
}

Value scalarProduct(const ClosedModel& model, const Operands& x, std::span<const Value> values) {
    const Operands a(model.operandsOf(x.indexOf(0)), values);
    const Operands b(model.operandsOf(x.indexOf(1)), values);
    if (a.size() != b.size()) return notANumber;
    ExactSum total;
    for (std::size_t k = 0; k < a.size(); ++k) total.add(multiply(a[k], b[k]));
    return total.total();
}

double unary(ls_operator op, double d) {
    switch (op) {
        case LS_OP_SQRT:
            return std::sqrt(d);
        case LS_OP_LOG:
            return logarithm(d);
        case LS_OP_EXP:
            return std::exp(d);
        case LS_OP_COS:
            return std::cos(d);
        case LS_OP_SIN:
            return std::sin(d);
        default:
            assert(op == LS_OP_TAN);
            return std::tan(d);
    }
}

}  // namespace

int compare(Value a, Value b) {
    if (a.isInt() && b.isInt()) return (a.asInt() > b.asInt()) - (a.asInt() < b.asInt());
    return (a.asDouble() > b.asDouble()) - (a.asDouble() < b.asDouble());
}

Value subtract(Value a, Value b) {
    std::int64_t exact = 0;
    if (a.isInt() && b.isInt() && !__builtin_sub_overflow(a.asInt(), b.asInt(), &exact)) {
        return Value::ofInt(exact);
    }
    return Value::ofDouble(a.asDouble() - b.asDouble());
}

Value multiply(Value a, Value b) {
    std::int64_t exact = 0;
    if (a.isInt() && b.isInt() && !__builtin_mul_overflow(a.asInt(), b.asInt(), &exact)) {
        return Value::ofInt(exact);
    }
    const double x = a.asDouble();
    const double y = b.asDouble();
    if ((x == 0.0 && !spoilsProducts(b)) || (y == 0.0 && !spoilsProducts(a)))
        return Value::ofDouble(0.0);
    return Value::ofDouble(x * y);
}

double toleranceBetween(Value left, Value right) {
    if (left.isInt() && right.isInt()) return 0.0;
    const double larger = std::fmax(std::fabs(left.asDouble()), std::fabs(right.asDouble()));
    return std::isinf(larger) ? 0.0 : relationTolerance * std::fmax(1.0, larger);
}

Value relate(ls_operator relation, Value left, Value right) {
    if (isNan(left) || isNan(right)) return notANumber;
    int order = compare(left, right);
    if (order != 0) {
        const double gap = std::fabs(left.asDouble() - right.asDouble());
        if (!(left.isInt() && right.isInt()) && gap <= toleranceBetween(left, right)) order = 0;
    }
    switch (relation) {
        case LS_OP_EQ:
            return ofBool(order == 0);
        case LS_OP_NEQ:
            return ofBool(order != 0);
        case LS_OP_GEQ:
            return ofBool(order >= 0);
        case LS_OP_LEQ:
            return ofBool(order <= 0);
        case LS_OP_GT:
            return ofBool(order > 0);
        default:
            assert(relation == LS_OP_LT);
            return ofBool(order < 0);
    }
}

namespace {

/// The result as it comes: an operation that leaves the doubles' range gives an infinity.
Value apply(const ClosedModel& model, ExpressionIndex e, std::span<const Value> values) {
    const Operands x(model.operandsOf(e), values);
    const ls_operator op = model.operatorOf(e);
    switch (op) {
        case LS_OP_SUM:
            return sum(x);
        case LS_OP_SUB:
            return subtract(x[0], x[1]);
        case LS_OP_PROD:
            return product(x);
        case LS_OP_MAX:
            return extreme(x, 1);
        case LS_OP_MIN:
            return extreme(x, -1);
        case LS_OP_EQ:
        case LS_OP_NEQ:
        case LS_OP_GEQ:
        case LS_OP_LEQ:
        case LS_OP_GT:
        case LS_OP_LT:
            return relate(op, x[0], x[1]);
        case LS_OP_IF:
            return choose(x);
        case LS_OP_NOT:
            return isNan(x[0]) ? notANumber : ofBool(!x[0].isTrue());
        case LS_OP_AND:
            return junction(x, /*absorbing=*/false);
        case LS_OP_OR:
            return junction(x, /*absorbing=*/true);
        case LS_OP_XOR:
            return parity(x);
        case LS_OP_ABS:
            return absolute(x[0]);
        case LS_OP_DIST:
            return absolute(subtract(x[0], x[1]));
        case LS_OP_DIV:
            return divide(x[0], x[1]);
        case LS_OP_MOD:
            return remainder(x[0], x[1]);
        case LS_OP_AT:
            return elementAt(model, x, values);
        case LS_OP_SCALARPROD:
            return scalarProduct(model, x, values);
        case LS_OP_CEIL:
            return roundWith(x[0], [](double d) { return std::ceil(d); });
        case LS_OP_FLOOR:
            return roundWith(x[0], [](double d) { return std::floor(d); });
        case LS_OP_ROUND:
            return roundWith(x[0], [](double d) { return std::round(d); });
        case LS_OP_POW:
            return power(x[0], x[1]);
        case LS_OP_ARRAY:
            return Value::ofInt(0);
        case LS_OP_BOOL:
        case LS_OP_FLOAT:
        case LS_OP_CONST:
        case LS_OP_INT:
            assert(false && "leaves have their values already");
            return Value();
        default:
            return Value::ofDouble(unary(op, x[0].asDouble()));
    }
}

}  // namespace

Value computeValue(const ClosedModel& model, ExpressionIndex e, std::span<const Value> values) {
    const Value v = apply(model, e, values);
    const bool isDefined = v.isInt() || std::isfinite(v.asDouble());
    return isDefined || (isPole(v) && model.operatorOf(e) == LS_OP_POW) ? v : notANumber;
}

}  // namespace engine
