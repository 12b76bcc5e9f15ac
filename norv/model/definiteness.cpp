#include "model/definiteness.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace norv {
namespace {

// Multiplications: a fraction of a second each.
constexpr double largestWork = 2e8;
constexpr double largestExactWork = 5e6;

/// The lower triangle of a symmetric matrix, each row from its first entry to the diagonal.
class Envelope {
public:
    /// Of x'Ax with the terms' variables in ascending order.
    explicit Envelope(std::span<const FormTerm> terms);

    [[nodiscard]] std::size_t size() const { return firsts_.size(); }
    [[nodiscard]] std::size_t first(std::size_t i) const { return firsts_[i]; }
    double& at(std::size_t i, std::size_t j) { return values_[starts_[i] + j - firsts_[i]]; }
    /// Of a factorization.
    [[nodiscard]] double work() const;
    /// Multiplies rows and columns by powers of two, so that the diagonal lies in [1, 4).
    /// @return false when an entry shows that the form is not semidefinite, or is lost.
    bool scale();
    void shift();

private:
    [[nodiscard]] double width(std::size_t i) const { return static_cast<double>(i - firsts_[i]); }

    std::vector<std::size_t> firsts_;  ///< [size] column of the row's first entry
    std::vector<std::size_t> starts_;  ///< [size] of the row in `values`
    std::vector<double> values_;
};

Envelope::Envelope(std::span<const FormTerm> terms) {
    std::vector<std::int32_t> variables;
    for (const FormTerm& each : terms) variables.insert(variables.end(), {each.first, each.second});
    std::sort(variables.begin(), variables.end());
    variables.erase(std::unique(variables.begin(), variables.end()), variables.end());
    const auto positionOf = [&](std::int32_t variable) {
        const auto found = std::lower_bound(variables.begin(), variables.end(), variable);
        return static_cast<std::size_t>(found - variables.begin());
    };
    for (std::size_t i = 0; i < variables.size(); ++i) firsts_.push_back(i);
    for (const FormTerm& each : terms) {
        const auto [low, high] = std::minmax({positionOf(each.first), positionOf(each.second)});
        firsts_[high] = std::min(firsts_[high], low);
    }
    if (work() > largestWork) return;
    std::size_t end = 0;
    for (std::size_t i = 0; i < size(); ++i) {
        starts_.push_back(end);
        end += i - firsts_[i] + 1;
    }
    values_.resize(end);
    for (const FormTerm& each : terms) {
        const auto [low, high] = std::minmax({positionOf(each.first), positionOf(each.second)});
        at(high, low) = low == high ? each.value : each.value / 2.0;
    }
}

double Envelope::work() const {
    double sum = 0.0;
    for (std::size_t i = 0; i < size(); ++i) sum += (width(i) + 1.0) * (width(i) + 1.0);
    return sum;
}

bool Envelope::scale() {
    constexpr double lost = 1e-250;
    std::vector<int> exponents(size());
    for (std::size_t i = 0; i < size(); ++i) {
        const double diagonal = at(i, i);
        if (!(diagonal > 0.0)) return false;  // a variable without a square stands in a product
        exponents[i] = -static_cast<int>(std::floor(std::ilogb(diagonal) / 2.0));
    }
    for (std::size_t i = 0; i < size(); ++i) {
        for (std::size_t j = first(i); j <= i; ++j) {
            double& entry = at(i, j);
            if (entry == 0.0) continue;
            entry = std::ldexp(entry, exponents[i] + exponents[j]);
            if (!(std::fabs(entry) < 4.0 && std::fabs(entry) > lost)) return false;
        }
    }
    return true;
}

void Envelope::shift() {
    double trace = 0.0;
    double widest = 0.0;
    for (std::size_t i = 0; i < size(); ++i) {
        trace += at(i, i);
        widest = std::max(widest, width(i));
    }
    // Eight times what the sums of this length can lose.
    const double lost = 4.0 * (widest + 3.0) * std::numeric_limits<double>::epsilon() * trace;
    for (std::size_t i = 0; i < size(); ++i) at(i, i) -= lost;
}

/// Arithmetic that knows whether it has rounded, when it matters.
struct Arithmetic {
    bool watches;
    bool hasRounded = false;

    /// a - b * c
    double minusProduct(double a, double b, double c) {
        const double product = b * c;
        const double result = a - product;
        if (watches) {
            constexpr double lost = 1e-250;  // below, the rest of a product may vanish
            const double back = result - a;
            const bool isSmall = product != 0.0 && std::fabs(product) < lost;
            const bool isExact =
                std::fma(b, c, -product) == 0.0 && (a - (result - back)) + (-product - back) == 0.0;
            hasRounded = hasRounded || isSmall || !isExact;
        }
        return result;
    }
    double quotient(double a, double b) {
        const double result = a / b;
        if (watches) hasRounded = hasRounded || std::fma(result, b, -a) != 0.0;
        return result;
    }
};

/// Overwrites `matrix` with L and D. @return false at a pivot that is negative, or 0 (to
/// `arithmetic` that watches: 0 in a column that is not).
bool factorize(Envelope& matrix, Arithmetic& arithmetic) {
    std::vector<double> product(matrix.size());  // of the row of L, with D
    for (std::size_t i = 0; i < matrix.size(); ++i) {
        double pivot = matrix.at(i, i);
        for (std::size_t j = matrix.first(i); j < i; ++j) {
            double entry = matrix.at(i, j);
            for (std::size_t k = std::max(matrix.first(i), matrix.first(j)); k < j; ++k)
                entry = arithmetic.minusProduct(entry, product[k], matrix.at(j, k));
            product[j] = entry;
            const double earlier = matrix.at(j, j);
            if (earlier == 0.0 && entry != 0.0) return false;
            matrix.at(i, j) = entry == 0.0 ? 0.0 : arithmetic.quotient(entry, earlier);
            pivot = arithmetic.minusProduct(pivot, entry, matrix.at(i, j));
        }
        if (arithmetic.hasRounded) return false;
        if (!(pivot > 0.0) && !(arithmetic.watches && pivot == 0.0)) return false;
        matrix.at(i, i) = pivot;
    }
    return true;
}

}  // namespace

bool isSurelySemidefinite(std::span<const FormTerm> terms) {
    Envelope matrix(terms);
    const double work = matrix.work();
    if (work > largestWork || !matrix.scale()) return false;
    Envelope shifted = matrix;
    shifted.shift();
    Arithmetic rounding{.watches = false};
    if (factorize(shifted, rounding)) return true;
    Arithmetic exact{.watches = true};
    return work <= largestExactWork && factorize(matrix, exact);
}

}  // namespace norv
