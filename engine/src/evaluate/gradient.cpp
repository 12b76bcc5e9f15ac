#include "evaluate/gradient.hpp"

#include <algorithm>
#include <cmath>

namespace engine {
namespace {

double number(std::span<const Value> values, ExpressionIndex e) {
    return values[static_cast<std::size_t>(e)].asDouble();
}

/// Derivative of a function of one argument that has `value` at `x`; 0 for steps.
double slope(ls_operator op, double x, double value) {
    switch (op) {
        case LS_OP_ABS:
            return x < 0.0 ? -1.0 : 1.0;
        case LS_OP_SQRT:
            return 0.5 / value;
        case LS_OP_LOG:
            return 1.0 / x;
        case LS_OP_EXP:
            return value;
        case LS_OP_COS:
            return -std::sin(x);
        case LS_OP_SIN:
            return std::cos(x);
        case LS_OP_TAN:
            return 1.0 + value * value;
        default:
            return 0.0;
    }
}

}  // namespace

void Gradient::clear() {
    std::fill(adjoint_.begin(), adjoint_.end(), 0.0);
}

void Gradient::accumulate(std::span<const Value> values) {
    for (std::size_t k = model_.order.size(); k-- > 0;) pass(model_.order[k], values);
}

void Gradient::pass(ExpressionIndex e, std::span<const Value> values) {
    const double weight = adjoint_[static_cast<std::size_t>(e)];
    if (weight != 0.0 && !model_.operandsOf(e).empty()) spread(e, weight, values);
}

void Gradient::give(ExpressionIndex e, double weight) {
    if (std::isfinite(weight)) {
        adjoint_[static_cast<std::size_t>(e)] += weight;
    } else {
        isComplete_ = false;
    }
}

void Gradient::spread(ExpressionIndex e, double weight, std::span<const Value> values) {
    const auto x = model_.operandsOf(e);
    const ls_operator op = model_.operatorOf(e);
    const double value = number(values, e);
    switch (op) {
        case LS_OP_SUM:
            for (const ExpressionIndex k : x) give(k, weight);
            return;
        case LS_OP_SUB:
            give(x[0], weight);
            give(x[1], -weight);
            return;
        case LS_OP_PROD:
            spreadProduct(x, weight, values);
            return;
        case LS_OP_MAX:
        case LS_OP_MIN: {
            const auto active = std::find_if(
                x.begin(), x.end(), [&](ExpressionIndex k) { return number(values, k) == value; });
            if (active != x.end()) give(*active, weight);
            return;
        }
        case LS_OP_IF:
            give(x[values[static_cast<std::size_t>(x[0])].isTrue() ? 1 : 2], weight);
            return;
        case LS_OP_DIST: {
            const double sign = number(values, x[0]) < number(values, x[1]) ? -1.0 : 1.0;
            give(x[0], sign * weight);
            give(x[1], -sign * weight);
            return;
        }
        case LS_OP_DIV:
            give(x[0], weight / number(values, x[1]));
            give(x[1], -weight * value / number(values, x[1]));
            return;
        case LS_OP_MOD:
            give(x[0], weight);
            return;
        case LS_OP_AT: {
            const auto array = model_.operandsOf(x[0]);
            const double position = number(values, x[1]);
            if (position >= 0.0 && position < static_cast<double>(array.size())) {
                give(array[static_cast<std::size_t>(position)], weight);
            }
            return;
        }
        case LS_OP_SCALARPROD:
            spreadScalarProduct(x, weight, values);
            return;
        case LS_OP_POW: {
            const double base = number(values, x[0]);
            const double exponent = number(values, x[1]);
            give(x[0], weight * exponent * std::pow(base, exponent - 1.0));
            if (base > 0.0) give(x[1], weight * value * std::log(base));
            return;
        }
        default:
            if (x.size() == 1) give(x[0], weight * slope(op, number(values, x[0]), value));
            return;
    }
}

void Gradient::spreadProduct(std::span<const ExpressionIndex> x, double weight,
                             std::span<const Value> values) {
    suffix_.assign(x.size() + 1, 1.0);
    for (std::size_t k = x.size(); k-- > 0;) suffix_[k] = suffix_[k + 1] * number(values, x[k]);
    double prefix = weight;
    for (std::size_t k = 0; k < x.size(); ++k) {
        give(x[k], prefix * suffix_[k + 1]);
        prefix *= number(values, x[k]);
    }
}

void Gradient::spreadScalarProduct(std::span<const ExpressionIndex> arrays, double weight,
                                   std::span<const Value> values) {
    const auto a = model_.operandsOf(arrays[0]);
    const auto b = model_.operandsOf(arrays[1]);
    for (std::size_t k = 0; k < std::min(a.size(), b.size()); ++k) {
        give(a[k], weight * number(values, b[k]));
        give(b[k], weight * number(values, a[k]));
    }
}

}  // namespace engine
