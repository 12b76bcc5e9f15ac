#include "nonlinear/functions.hpp"

#include <cassert>
#include <limits>
#include <numbers>

namespace norv {

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

double logarithm(double x, double (*rule)(double)) {
    return x > 0.0 ? rule(x) : notANumber;
}

/// |base| ** exponent with the sign of `base`; 0 for a base of 0.
double signedPower(double base, double exponent) {
    if (base == 0.0) return std::isnan(exponent) ? notANumber : 0.0;
    return std::copysign(std::pow(std::fabs(base), exponent), base);
}

double unary(Function function, double x) {
    switch (function) {
        case Function::ceil:
            return std::ceil(x);
        case Function::floor:
            return std::floor(x);
        case Function::round:
            return std::round(x);
        case Function::sqr:
            return x * x;
        case Function::exp:
            return std::exp(x);
        case Function::log:
            return logarithm(x, std::log);
        case Function::log10:
            return logarithm(x, std::log10);
        case Function::log2:
            return logarithm(x, std::log2);
        case Function::sqrt:
            return std::sqrt(x);
        case Function::abs:
            return std::fabs(x);
        case Function::cos:
            return std::cos(x);
        case Function::sin:
            return std::sin(x);
        case Function::tan:
            return std::tan(x);
        default:
            assert(function == Function::boolnot);
            return x == 0.0 ? 1.0 : 0.0;
    }
}

double relation(Function function, double x, double y) {
    switch (function) {
        case Function::booleqv:
        case Function::relopeq:
            return x == y ? 1.0 : 0.0;
        case Function::relopgt:
            return x > y ? 1.0 : 0.0;
        case Function::relopge:
            return x >= y ? 1.0 : 0.0;
        case Function::reloplt:
            return x < y ? 1.0 : 0.0;
        case Function::relople:
            return x <= y ? 1.0 : 0.0;
        default:
            assert(function == Function::relopne);
            return x != y ? 1.0 : 0.0;
    }
}

double binary(Function function, double x, double y) {
    switch (function) {
        case Function::min:
            return y < x ? y : x;
        case Function::max:
            return y > x ? y : x;
        case Function::power:
        case Function::rpower:
        case Function::cvpower:
        case Function::vcpower:
            return std::pow(x, y);
        case Function::signpower:
            return signedPower(x, y);
        case Function::div:
            return x / y;
        case Function::boolxor:
            return (x != 0.0) != (y != 0.0) ? 1.0 : 0.0;
        default:
            return relation(function, x, y);
    }
}

/// A side without errors that is `absorbing` decides alone.
Quantity junction(Quantity x, Quantity y, bool absorbing) {
    for (const Quantity& side : {x, y}) {
        if (side.nbErrors == 0 && (side.value != 0.0) == absorbing)
            return {absorbing ? 1.0 : 0.0, 0};
    }
    return {absorbing ? 0.0 : 1.0, sumOfErrors(x.nbErrors, y.nbErrors)};
}

Quantity ternary(std::span<const Quantity> x) {
    const Quantity& chosen = x[0].value != 0.0 ? x[1] : x[2];
    return resultOf(chosen.value, sumOfErrors(x[0].nbErrors, chosen.nbErrors));
}

std::int32_t errorsOf(std::span<const Quantity> arguments) {
    std::int32_t nbErrors = 0;
    for (const Quantity& each : arguments) nbErrors = sumOfErrors(nbErrors, each.nbErrors);
    return nbErrors;
}

double distance(std::span<const Quantity> x) {
    double sum = 0.0;
    for (const Quantity& each : x) sum += each.value * each.value;
    return std::sqrt(sum);
}

/// Of (x, a0, a1, …): a0 + a1 x + …, by Horner's rule. Without a1, x has no say.
Quantity polynomial(std::span<const Quantity> x) {
    if (x.size() <= 1) return {};
    double sum = x.back().value;
    for (std::size_t k = x.size() - 2; k >= 1; --k) sum = multiply(sum, x[0].value) + x[k].value;
    return resultOf(sum, errorsOf(x.size() == 2 ? x.subspan(1) : x));
}

}  // namespace

Quantity call(Function function, std::span<const Quantity> arguments) {
    const auto& x = arguments;
    switch (function) {
        case Function::pi:
            return {std::numbers::pi, 0};
        case Function::edist:
            return resultOf(distance(x), errorsOf(x));
        case Function::poly:
            return polynomial(x);
        case Function::ifthen:
            return ternary(x);
        case Function::booland:
            return junction(x[0], x[1], /*absorbing=*/false);
        case Function::boolor:
            return junction(x[0], x[1], /*absorbing=*/true);
        case Function::boolimp: {
            const Quantity premiseFails{x[0].value == 0.0 ? 1.0 : 0.0, x[0].nbErrors};
            return junction(premiseFails, x[1], /*absorbing=*/true);
        }
        default:
            break;
    }
    const double value =
        x.size() == 1 ? unary(function, x[0].value) : binary(function, x[0].value, x[1].value);
    return resultOf(value, errorsOf(x));
}

const char* signOf(Function relation) {
    assert(isRelation(relation));
    constexpr const char* signs[] = {"=", ">", ">=", "<", "<=", "<>"};
    return signs[static_cast<int>(relation) - static_cast<int>(Function::relopeq)];
}

}  // namespace norv
