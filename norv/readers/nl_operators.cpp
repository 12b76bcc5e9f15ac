#include "readers/nl_operators.hpp"

#include <algorithm>
#include <array>
#include <vector>

namespace norv {

namespace {

using Operands = std::span<const NodeIndex>;

enum : std::int32_t {
    opPlus = 0,
    opMinus = 1,
    opMultiply = 2,
    opDivide = 3,
    opRemainder = 4,
    opPower = 5,
    opLess = 6,
    opMinimum = 11,
    opMaximum = 12,
    opFloor = 13,
    opCeil = 14,
    opAbs = 15,
    opNegate = 16,
    opOr = 20,
    opAnd = 21,
    opBelow = 22,
    opAtMost = 23,
    opEqual = 24,
    opAtLeast = 28,
    opAbove = 29,
    opUnequal = 30,
    opNot = 34,
    opIf = 35,
    opTanh = 37,
    opTan = 38,
    opSqrt = 39,
    opSinh = 40,
    opSin = 41,
    opLog10 = 42,
    opLog = 43,
    opExp = 44,
    opCosh = 45,
    opCos = 46,
    opAtanh = 47,
    opAsinh = 50,
    opAcosh = 52,
    opSum = 54,
    opIntegerDivide = 55,
    opRound = 57,
    opTrunc = 58,
    opCount = 59,
    opNumberOf = 60,
    opCountAtLeast = 62,
    opCountAtMost = 63,
    opPiecewise = 64,
    opCountExactly = 66,
    opNotAtLeast = 67,
    opNotAtMost = 68,
    opNotExactly = 69,
    opAndList = 70,
    opOrList = 71,
    opImplies = 72,
    opIff = 73,
    opAllDifferent = 74,
    opSomeSame = 75,
    opPowerOfConstant = 76,
    opSquare = 77,
    opConstantToPower = 78,
};

constexpr auto operators = std::to_array<NlOperator>({
    {opPlus, "+", 2},
    {opMinus, "-", 2},
    {opMultiply, "*", 2},
    {opDivide, "/", 2},
    {opRemainder, "mod", 2},
    {opPower, "^", 2},
    {opLess, "less", 2},
    {opMinimum, "min", NlOperator::list},
    {opMaximum, "max", NlOperator::list},
    {opFloor, "floor", 1},
    {opCeil, "ceil", 1},
    {opAbs, "abs", 1},
    {opNegate, "unary -", 1},
    {opOr, "or", 2},
    {opAnd, "and", 2},
    {opBelow, "<", 2},
    {opAtMost, "<=", 2},
    {opEqual, "=", 2},
    {opAtLeast, ">=", 2},
    {opAbove, ">", 2},
    {opUnequal, "!=", 2},
    {opNot, "not", 1},
    {opIf, "if", 3},
    {opTanh, "tanh", 1},
    {opTan, "tan", 1},
    {opSqrt, "sqrt", 1},
    {opSinh, "sinh", 1},
    {opSin, "sin", 1},
    {opLog10, "log10", 1},
    {opLog, "log", 1},
    {opExp, "exp", 1},
    {opCosh, "cosh", 1},
    {opCos, "cos", 1},
    {opAtanh, "atanh", 1},
    {48, "atan2", 2},
    {49, "atan", 1},
    {opAsinh, "asinh", 1},
    {51, "asin", 1},
    {opAcosh, "acosh", 1},
    {53, "acos", 1},
    {opSum, "sum", NlOperator::list},
    {opIntegerDivide, "div", 2},
    {56, "precision", 2},
    {opRound, "round", 2},
    {opTrunc, "trunc", 2},
    {opCount, "count", NlOperator::list},
    {opNumberOf, "numberof", NlOperator::list},
    {61, "numberof of strings", NlOperator::list},
    {opCountAtLeast, "atleast", 2},
    {opCountAtMost, "atmost", 2},
    {opPiecewise, "piecewise-linear term", NlOperator::piecewise},
    {65, "if of strings", 3},
    {opCountExactly, "exactly", 2},
    {opNotAtLeast, "not atleast", 2},
    {opNotAtMost, "not atmost", 2},
    {opNotExactly, "not exactly", 2},
    {opAndList, "and list", NlOperator::list},
    {opOrList, "or list", NlOperator::list},
    {opImplies, "==>", 3},
    {opIff, "<==>", 2},
    {opAllDifferent, "alldiff", NlOperator::list},
    {opSomeSame, "somesame", NlOperator::list},
    {opPowerOfConstant, "^ constant", 2},
    {opSquare, "^2", 1},
    {opConstantToPower, "constant ^", 2},
});

static_assert(std::is_sorted(operators.begin(), operators.end(),
                             [](const auto& a, const auto& b) { return a.code < b.code; }));

/// Operators that are one function of the host, the operands in the same order.
struct Counterpart {
    std::int32_t code;
    Function function;
    bool takesTruth = false;  ///< operands count as true or false
};

constexpr auto counterparts = std::to_array<Counterpart>({
    {opMinimum, Function::min},
    {opMaximum, Function::max},
    {opFloor, Function::floor},
    {opCeil, Function::ceil},
    {opAbs, Function::abs},
    {opOr, Function::boolor, true},
    {opAnd, Function::booland, true},
    {opBelow, Function::reloplt},
    {opAtMost, Function::relople},
    {opEqual, Function::relopeq},
    {opAtLeast, Function::relopge},
    {opAbove, Function::relopgt},
    {opUnequal, Function::relopne},
    {opNot, Function::boolnot, true},
    {opTan, Function::tan},
    {opSqrt, Function::sqrt},
    {opSin, Function::sin},
    {opLog10, Function::log10},
    {opLog, Function::log},
    {opExp, Function::exp},
    {opCos, Function::cos},
    // The first side is the number that the second, a count, is compared with.
    {opCountAtLeast, Function::relople},
    {opCountAtMost, Function::relopge},
    {opCountExactly, Function::relopeq},
    {opNotAtLeast, Function::relopgt},
    {opNotAtMost, Function::reloplt},
    {opNotExactly, Function::relopne},
    {opAndList, Function::booland, true},
    {opOrList, Function::boolor, true},
    {opIff, Function::booleqv, true},
    {opSquare, Function::sqr},
});

constexpr std::size_t nbCodes = 79;

/// By code: the row of `table`, or -1.
template <class Table>
constexpr std::array<std::int16_t, nbCodes> rowsByCode(const Table& table) {
    std::array<std::int16_t, nbCodes> rows{};
    rows.fill(-1);
    for (std::size_t k = 0; k < table.size(); ++k)
        rows[static_cast<std::size_t>(table[k].code)] = static_cast<std::int16_t>(k);
    return rows;
}

/// Null where the table has no such row.
template <class Table>
constexpr auto findRow(const Table& table, const std::array<std::int16_t, nbCodes>& rows,
                       std::int32_t code) -> decltype(table.data()) {
    if (code < 0 || code >= static_cast<std::int32_t>(nbCodes)) return nullptr;
    const std::int16_t row = rows[static_cast<std::size_t>(code)];
    return row < 0 ? nullptr : &table[static_cast<std::size_t>(row)];
}

constexpr auto operatorRows = rowsByCode(operators);
constexpr auto counterpartRows = rowsByCode(counterparts);

/// More items make more pairs than a model can use.
constexpr std::size_t mostDifferent = 2000;

/// The operations that take more than one function.
class Maker {
public:
    explicit Maker(ExpressionStore& expressions) : store_(expressions) {}

    NodeIndex make(std::int32_t code, Operands x);

private:
    std::vector<NodeIndex> truths(Operands x) {
        std::vector<NodeIndex> result(x.begin(), x.end());
        for (NodeIndex& each : result) each = store_.truth(each);
        return result;
    }
    NodeIndex ifThen(NodeIndex condition, NodeIndex x, NodeIndex y) {
        return store_.call(Function::ifthen, std::array{condition, x, y});
    }
    [[nodiscard]] bool isConstant(NodeIndex x, double value) const {
        return store_.isConstant(x) && store_.valueOf(x) == value;
    }

    NodeIndex power(NodeIndex base, NodeIndex exponent);
    NodeIndex truncated(NodeIndex x);
    NodeIndex remainder(NodeIndex a, NodeIndex b);
    NodeIndex hyperbolic(std::int32_t code, NodeIndex x);
    NodeIndex areaFunction(std::int32_t code, NodeIndex x);
    NodeIndex implication(Operands x);
    NodeIndex numberOf(Operands x);
    NodeIndex allDifferent(Operands x);
    NodeIndex piecewise(Operands x);

    ExpressionStore& store_;
};

NodeIndex Maker::power(NodeIndex base, NodeIndex exponent) {
    if (store_.isConstant(base)) return store_.call(Function::cvpower, base, exponent);
    if (!store_.isConstant(exponent)) return store_.call(Function::rpower, base, exponent);
    const double value = store_.valueOf(exponent);
    if (value == 1.0) return base;
    if (value == 2.0) return store_.call(Function::sqr, base);
    const bool isIntegral = value == std::trunc(value);
    return store_.call(isIntegral ? Function::power : Function::vcpower, base, exponent);
}

NodeIndex Maker::truncated(NodeIndex x) {
    const NodeIndex isPositive = store_.call(Function::relopge, x, store_.constant(0.0));
    return ifThen(isPositive, store_.call(Function::floor, x), store_.call(Function::ceil, x));
}

/// a - b * trunc(a / b)
NodeIndex Maker::remainder(NodeIndex a, NodeIndex b) {
    const NodeIndex whole = truncated(store_.quotient(a, b));
    return store_.difference(a, store_.product(std::array{b, whole}));
}

NodeIndex Maker::hyperbolic(std::int32_t code, NodeIndex x) {
    const NodeIndex one = store_.constant(1.0);
    const NodeIndex two = store_.constant(2.0);
    if (code == opTanh) {
        // 1 - 2 / (exp(2 x) + 1); beyond this bound of 2 x the value is 1 already.
        const NodeIndex bound = store_.constant(700.0);
        const NodeIndex capped =
            store_.call(Function::min, store_.product(std::array{two, x}), bound);
        const NodeIndex power = store_.call(Function::exp, capped);
        return store_.difference(one, store_.quotient(two, store_.sum(std::array{power, one})));
    }
    const NodeIndex up = store_.call(Function::exp, x);
    const NodeIndex down = store_.call(Function::exp, store_.negation(x));
    return store_.quotient(
        code == opSinh ? store_.difference(up, down) : store_.sum(std::array{up, down}), two);
}

/// The inverses of the hyperbolic functions, by logarithms.
NodeIndex Maker::areaFunction(std::int32_t code, NodeIndex x) {
    const NodeIndex one = store_.constant(1.0);
    const auto log = [this](NodeIndex each) { return store_.call(Function::log, each); };
    if (code == opAtanh) {
        const NodeIndex ratio =
            store_.quotient(store_.sum(std::array{one, x}), store_.difference(one, x));
        return store_.product(std::array{store_.constant(0.5), log(ratio)});
    }
    // Near 1, x^2 - 1 would be the difference of two nearly equal numbers.
    const NodeIndex radicand =
        code == opAcosh
            ? store_.product(std::array{store_.difference(x, one), store_.sum(std::array{x, one})})
            : store_.sum(std::array{store_.call(Function::sqr, x), one});
    const NodeIndex root = store_.call(Function::sqrt, radicand);
    const NodeIndex above = log(store_.sum(std::array{x, root}));
    if (code == opAcosh) return above;
    // Far below 0 the sum would be the difference of two nearly equal numbers.
    const NodeIndex isPositive = store_.call(Function::relopge, x, store_.constant(0.0));
    return ifThen(isPositive, above, store_.negation(log(store_.difference(root, x))));
}

NodeIndex Maker::implication(Operands x) {
    const auto sides = truths(x);
    if (isConstant(sides[2], 1.0)) return store_.call(Function::boolimp, sides[0], sides[1]);
    return store_.truth(ifThen(sides[0], sides[1], sides[2]));
}

/// How many of the others equal the first.
NodeIndex Maker::numberOf(Operands x) {
    std::vector<NodeIndex> matches;
    for (const NodeIndex each : x.subspan(1))
        matches.push_back(store_.call(Function::relopeq, x[0], each));
    return store_.sum(matches);
}

NodeIndex Maker::allDifferent(Operands x) {
    if (x.size() > mostDifferent) return noNode;
    std::vector<NodeIndex> pairs;
    for (std::size_t i = 0; i < x.size(); ++i) {
        for (std::size_t k = i + 1; k < x.size(); ++k)
            pairs.push_back(store_.call(Function::relopne, x[i], x[k]));
    }
    return pairs.empty() ? store_.constant(1.0) : store_.call(Function::booland, pairs);
}

/// Slopes and breakpoints in turn, then the argument; the function is 0 at 0. Each breakpoint b
/// adds (slope after - slope before) * (max(x - b, 0) - max(-b, 0)).
NodeIndex Maker::piecewise(Operands x) {
    const NodeIndex argument = x.back();
    const Operands numbers = x.first(x.size() - 1);
    const bool areNumbers = std::all_of(numbers.begin(), numbers.end(),
                                        [this](NodeIndex each) { return store_.isConstant(each); });
    if (!areNumbers) return noNode;
    std::vector<NodeIndex> terms = {store_.product(std::array{numbers[0], argument})};
    double constant = 0.0;
    for (std::size_t k = 1; k + 1 < numbers.size(); k += 2) {
        const double change = store_.valueOf(numbers[k + 1]) - store_.valueOf(numbers[k - 1]);
        const double atZero = std::fmax(-store_.valueOf(numbers[k]), 0.0);
        const NodeIndex beyond = store_.call(Function::max, store_.difference(argument, numbers[k]),
                                             store_.constant(0.0));
        terms.push_back(store_.product(std::array{store_.constant(change), beyond}));
        constant += change * atZero;
    }
    if (constant != 0.0) terms.push_back(store_.constant(-constant));
    return store_.sum(terms);
}

NodeIndex Maker::make(std::int32_t code, Operands x) {
    switch (code) {
        case opPlus:
        case opSum:
            return store_.sum(x);
        case opMinus:
            return store_.difference(x[0], x[1]);
        case opMultiply:
            return store_.product(x);
        case opDivide:
            return store_.quotient(x[0], x[1]);
        case opRemainder:
            return remainder(x[0], x[1]);
        case opPower:
        case opPowerOfConstant:
        case opConstantToPower:
            return power(x[0], x[1]);
        case opLess:
            return store_.call(Function::max, store_.difference(x[0], x[1]), store_.constant(0.0));
        case opNegate:
            return store_.negation(x[0]);
        case opIf:
            return ifThen(store_.truth(x[0]), x[1], x[2]);
        case opTanh:
        case opSinh:
        case opCosh:
            return hyperbolic(code, x[0]);
        case opAtanh:
        case opAsinh:
        case opAcosh:
            return areaFunction(code, x[0]);
        case opIntegerDivide:
            return truncated(store_.quotient(x[0], x[1]));
        case opRound:
            return isConstant(x[1], 0.0) ? store_.call(Function::round, x[0]) : noNode;
        case opTrunc:
            return isConstant(x[1], 0.0) ? truncated(x[0]) : noNode;
        case opCount:
            return store_.sum(truths(x));
        case opNumberOf:
            return numberOf(x);
        case opPiecewise:
            return piecewise(x);
        case opImplies:
            return implication(x);
        case opAllDifferent:
            return allDifferent(x);
        case opSomeSame: {
            const NodeIndex different = allDifferent(x);
            return different == noNode ? noNode : store_.call(Function::boolnot, different);
        }
        default:
            return noNode;
    }
}

}  // namespace

const NlOperator* findNlOperator(std::int32_t code) noexcept {
    return findRow(operators, operatorRows, code);
}

NodeIndex makeNlOperation(ExpressionStore& store, std::int32_t code, Operands operands) {
    const Counterpart* counterpart = findRow(counterparts, counterpartRows, code);
    if (counterpart == nullptr) return Maker(store).make(code, operands);
    if (!counterpart->takesTruth) return store.call(counterpart->function, operands);
    std::vector<NodeIndex> truths(operands.begin(), operands.end());
    for (NodeIndex& each : truths) each = store.truth(each);
    return store.call(counterpart->function, truths);
}

}  // namespace norv
