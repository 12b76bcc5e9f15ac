#include <cstdint>
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
    std::int64_t product = 0;
    if (__builtin_mul_overflow(a, b, &product)) return std::nullopt;
    return product;
}

}  // namespace

bool NorvLocalSolver::mayGrow(LSExpression e, bool extendable) const {
    return extendable && definitions.count(e.getIndex()) == 0;
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
    return makeNode(model, LS_OP_PROD, x, model.createConstant(k));
}

LSExpression NorvLocalSolver::makeLinearCombination(double a, LSExpression x, bool xExtendable,
                                                    double b, LSExpression y, bool yExtendable,
                                                    double c) {
    if (x.isBuilt() && x.isNamed()) xExtendable = false;
    if (y.isBuilt() && y.isNamed()) yExtendable = false;
    if (x.isBuilt() && x == y) {
        return makeLinearCombination(a + b, x, xExtendable || yExtendable, 0.0, LSExpression(),
                                     /*yExtendable=*/true, c);
    }
    if (x.isBuilt() && x.getOperator() == LS_OP_CONST) {
        c += a * getConstantValue(x);
        x = LSExpression();
    }
    if (y.isBuilt() && y.getOperator() == LS_OP_CONST) {
        c += b * getConstantValue(y);
        y = LSExpression();
    }
    if (!x.isBuilt() && !y.isBuilt()) return makeConstant(c);
    if (x.isBuilt()) x = scaleExpression(x, xExtendable, a);
    if (y.isBuilt()) y = scaleExpression(y, yExtendable, b);
    if (!x.isBuilt()) {
        x = std::exchange(y, LSExpression());
        xExtendable = yExtendable;
    }
    if (!y.isBuilt() && c == 0.0) return x;
    return addUp(x, xExtendable, y, yExtendable, c);
}

/// x + y + c, where `x` is built and `y` may be empty.
LSExpression NorvLocalSolver::addUp(LSExpression x, bool xExtendable, LSExpression y,
                                    bool yExtendable, double c) {
    const LSModel model = solver->getModel();
    // The sum comes first; whether it may grow is still up to the flag of the first operand.
    if (y.isBuilt() && x.getOperator() != LS_OP_SUM && y.getOperator() == LS_OP_SUM && yExtendable)
        std::swap(x, y);
    LSExpression sum = x;
    if (x.getOperator() != LS_OP_SUM || !mayGrow(x, xExtendable)) {
        sum = model.createExpression(LS_OP_SUM);
        sum.addOperand(x);
    }
    if (y.isBuilt()) {
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
