#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include "translate/nlocalsolver.hpp"
#include "translate/saturate.hpp"

/// Sums, scalings and associative operations that stay flat and fold their constants.
///
/// Two questions are asked of an expression before it is extended in place. The flag that the
/// caller hands over, cleared for named expressions, decides what the result looks like; at the
/// moment when an operand list would really grow, expressions that stand for a variable are left
/// alone too, because every row shares them.

namespace vex {

namespace {

using localsolver::LSExpression;
using localsolver::LSModel;
using localsolver::LSOperator;

LSExpression makeNode(const LSModel& model, LSOperator op, LSExpression first,
                      LSExpression second) {
    const LSExpression node = model.createExpression(op);
    node.addOperand(first);
    node.addOperand(second);
    return node;
}

/// The number is taken once: the two may be the same expression, which then grows meanwhile.
LSExpression appendOperandsOf(LSExpression source, LSExpression target) {
    const std::int32_t nbOperands = source.getNbOperands();
    for (std::int32_t k = 0; k < nbOperands; ++k) target.addOperand(source.getOperand(k));
    return target;
}

/// The product as an integer, nothing when it leaves the 64-bit range.
std::optional<std::int64_t> exactProduct(std::int64_t a, std::int64_t b) {
    constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    if (a == 0 || b == 0) return 0;
    // The quotients are cut toward 0; the smallest number is never divided by -1.
    const bool fits = a > 0 ? (b > 0 ? a <= largest / b : b >= least / a)
                            : (b > 0 ? a >= least / b : a >= largest / b);
    if (!fits) return std::nullopt;
    return a * b;
}

}  // namespace

bool NorvLocalSolver::mayGrow(LSExpression e, bool extendable) const {
    return extendable && definingExpressions_.count(e.getIndex()) == 0;
}

LSExpression NorvLocalSolver::scaleConstant(LSExpression x, double k) {
    const std::int64_t* integer = intConstants.find(x.getIndex());
    if (integer != nullptr && isIntegral(k)) {
        if (const auto product = exactProduct(static_cast<std::int64_t>(k), *integer))
            return makeIntConstant(*product);
    }
    return makeConstant(k * getConstantValue(x));
}

LSExpression NorvLocalSolver::scaleExpression(LSExpression x, bool extendable, double k) {
    if (k == 1.0) return x;
    if (k == 0.0) return makeIntConstant(0);
    const LSOperator op = x.getOperator();
    if (op == LS_OP_CONST) return scaleConstant(x, k);
    const LSModel model = solver->getModel();
    if (op == LS_OP_PROD && mayGrow(x, extendable && !x.isNamed())) {
        x.addOperand(model.createConstant(k));
        return x;
    }
    const LSExpression product = model.createExpression(LS_OP_PROD);
    product.addOperand(x);
    product.addOperand(model.createConstant(k));
    return product;
}

LSExpression NorvLocalSolver::makeLinearCombination(double a, LSExpression x, bool xExtendable,
                                                    double b, LSExpression y, bool yExtendable,
                                                    double c) {
    if (isBuilt(x) && x.isNamed()) xExtendable = false;
    if (isBuilt(y) && y.isNamed()) yExtendable = false;
    if (isBuilt(x) && x == y) {
        return makeLinearCombination(a + b, x, xExtendable || yExtendable, 0.0, LSExpression(),
                                     /*yExtendable=*/true, c);
    }
    if (isBuilt(x) && x.getOperator() == LS_OP_CONST) {
        c += a * getConstantValue(x);
        x = LSExpression();
    }
    if (isBuilt(y) && y.getOperator() == LS_OP_CONST) {
        c += b * getConstantValue(y);
        y = LSExpression();
    }
    if (!isBuilt(x) && !isBuilt(y)) return makeConstant(c);
    if (isBuilt(x)) x = scaleExpression(x, xExtendable, a);
    if (isBuilt(y)) y = scaleExpression(y, yExtendable, b);
    if (!isBuilt(x)) {
        x = std::exchange(y, LSExpression());
        xExtendable = yExtendable;
    }
    if (!isBuilt(y) && c == 0.0) return x;
    return addUp(x, xExtendable, y, yExtendable, c);
}

/// x + y + c, where `x` is built and `y` may be empty.
LSExpression NorvLocalSolver::addUp(LSExpression x, bool xExtendable, LSExpression y,
                                    bool yExtendable, double c) {
    const LSModel model = solver->getModel();
    // The sum comes first; whether it may grow is still up to the flag of the first operand.
    if (isBuilt(y) && x.getOperator() != LS_OP_SUM && y.getOperator() == LS_OP_SUM && yExtendable)
        std::swap(x, y);
    LSExpression sum = x;
    if (x.getOperator() != LS_OP_SUM || !mayGrow(x, xExtendable)) {
        sum = model.createExpression(LS_OP_SUM);
        sum.addOperand(x);
    }
    if (isBuilt(y)) {
        if (y.getOperator() == LS_OP_SUM)
            appendOperandsOf(y, sum);
        else
            sum.addOperand(y);
    }
    if (c != 0.0) {
        sum.addOperand(isIntegral(c) ? model.createConstant(static_cast<std::int64_t>(c))
                                     : model.createConstant(c));
    }
    return sum;
}

LSExpression NorvLocalSolver::makeFlatExpression(LSOperator op, LSExpression x, bool xExtendable,
                                                 LSExpression y, bool yExtendable) {
    const bool xIsFlat = x.getOperator() == op;
    const bool yIsFlat = y.getOperator() == op;
    const bool xMayGrow = xIsFlat && mayGrow(x, xExtendable && !x.isNamed());
    const bool yMayGrow = yIsFlat && mayGrow(y, yExtendable && !y.isNamed());
    if (x == y) {
        return xMayGrow ? appendOperandsOf(x, x) : makeNode(solver->getModel(), op, x, x);
    }
    if (xIsFlat && yIsFlat) {
        if (xMayGrow) return appendOperandsOf(y, x);
        if (yMayGrow) return appendOperandsOf(x, y);
    }
    if (xMayGrow) {
        x.addOperand(y);
        return x;
    }
    if (yMayGrow) {
        y.addOperand(x);
        return y;
    }
    return makeNode(solver->getModel(), op, x, y);
}

}  // namespace vex
