#include "prove/curvature.hpp"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>

namespace engine {
namespace {

using enum Curvature;

/// Larger quadratic forms are left unknown: factoring them would take too long.
constexpr std::size_t largestForm = 400;
constexpr std::size_t mostFormWork = 200'000'000;

bool isAffine(Curvature c) {
    return c == Constant || c == Affine;
}
bool isConvex(Curvature c) {
    return isAffine(c) || c == Convex;
}
bool isConcave(Curvature c) {
    return isAffine(c) || c == Concave;
}
Curvature flipped(Curvature c) {
    if (c == Convex) return Concave;
    return c == Concave ? Convex : c;
}
Curvature added(Curvature a, Curvature b) {
    if (a == Constant) return b;
    if (b == Constant || a == b) return a;
    if (a == Unknown || b == Unknown) return Unknown;
    if (a == Affine) return b;
    return b == Affine ? a : Unknown;
}
Curvature convexIf(bool condition) {
    return condition ? Convex : Unknown;
}
Curvature concaveIf(bool condition) {
    return condition ? Concave : Unknown;
}

/// Is the symmetric matrix [n * n] positive semidefinite, up to rounding?
bool isSemidefinite(std::vector<double> a, std::size_t n) {
    double largest = 0.0;
    for (std::size_t j = 0; j < n; ++j) largest = std::fmax(largest, std::fabs(a[j * n + j]));
    constexpr double rounding = 1e-12;
    for (std::size_t j = 0; j < n; ++j) {
        const double pivot = a[j * n + j] + rounding * largest;
        if (!(pivot > 0.0)) return false;
        for (std::size_t i = j + 1; i < n; ++i) {
            const double factor = a[i * n + j] / pivot;
            if (factor == 0.0) continue;
            for (std::size_t k = j + 1; k <= i; ++k) a[i * n + k] -= factor * a[k * n + j];
        }
    }
    return true;
}

class Analysis {
public:
    Analysis(const ClosedModel& model, const Propagator& propagator,
             const std::vector<Value>& values)
        : model_(model), propagator_(propagator), values_(values), result_(model.op.size()) {}

    std::vector<CurvatureOfExpression> run() {
        for (const ExpressionIndex e : model_.order) {
            const auto i = static_cast<std::size_t>(e);
            result_[i].curvature = curvatureOf(e);
            if (model_.operatorOf(e) != LS_OP_SUM || result_[i].curvature != Unknown) continue;
            result_[i].curvature = curvatureOfForm(e);
            result_[i].isWhole = result_[i].curvature != Unknown;
        }
        return std::move(result_);
    }

private:
    [[nodiscard]] Curvature of(ExpressionIndex e) const {
        return result_[static_cast<std::size_t>(e)].curvature;
    }
    [[nodiscard]] double number(ExpressionIndex e) const {
        return values_[static_cast<std::size_t>(e)].asDouble();
    }
    [[nodiscard]] Range range(ExpressionIndex e) const { return propagator_.rangeOf(e); }
    Curvature curvatureOf(ExpressionIndex e);
    Curvature curvatureOfProduct(ExpressionIndex e);
    [[nodiscard]] Curvature curvatureOfSquare(ExpressionIndex e) const;
    Curvature curvatureOfPower(ExpressionIndex base, ExpressionIndex exponent);
    [[nodiscard]] Curvature curvatureOfQuotient(ExpressionIndex upper, ExpressionIndex lower) const;
    Curvature curvatureOfForm(ExpressionIndex sum);
    bool addToForm(ExpressionIndex term);
    std::size_t positionInForm(ExpressionIndex e);

    const ClosedModel& model_;
    const Propagator& propagator_;
    const std::vector<Value>& values_;
    std::vector<CurvatureOfExpression> result_;
    std::map<ExpressionIndex, std::size_t> position_;  ///< of factors in the form
    struct Entry {
        std::size_t row;
        std::size_t column;
        double coefficient;
    };
    std::vector<Entry> form_;
    std::size_t formWork_ = 0;
};

Curvature Analysis::curvatureOf(ExpressionIndex e) {
    if (model_.decisionOf[static_cast<std::size_t>(e)] >= 0) return Affine;
    const auto x = model_.operandsOf(e);
    const auto isConstant = [this](ExpressionIndex k) { return of(k) == Constant; };
    if (std::all_of(x.begin(), x.end(), isConstant)) return Constant;
    const auto all = [&](bool (*holds)(Curvature)) {
        return std::all_of(x.begin(), x.end(), [&](ExpressionIndex k) { return holds(of(k)); });
    };
    switch (model_.operatorOf(e)) {
        case LS_OP_SUM: {
            Curvature total = Constant;
            for (const ExpressionIndex k : x) total = added(total, of(k));
            return total;
        }
        case LS_OP_SUB:
            return added(of(x[0]), flipped(of(x[1])));
        case LS_OP_PROD:
            return curvatureOfProduct(e);
        case LS_OP_DIV:
            return curvatureOfQuotient(x[0], x[1]);
        case LS_OP_MAX:
            return convexIf(all(isConvex));
        case LS_OP_MIN:
            return concaveIf(all(isConcave));
        case LS_OP_ABS:
            return convexIf(isAffine(of(x[0])));
        case LS_OP_DIST:
            return convexIf(all(isAffine));
        case LS_OP_EXP:
            return convexIf(isConvex(of(x[0])));
        case LS_OP_LOG:
        case LS_OP_SQRT:
            return concaveIf(isConcave(of(x[0])));
        case LS_OP_POW:
            return curvatureOfPower(x[0], x[1]);
        default:
            return Unknown;
    }
}

/// A multiple of one expression or of a square.
Curvature Analysis::curvatureOfProduct(ExpressionIndex e) {
    double factor = 1.0;
    std::vector<ExpressionIndex> others;
    for (const ExpressionIndex k : model_.operandsOf(e)) {
        if (of(k) == Constant) {
            factor *= number(k);
        } else {
            others.push_back(k);
        }
    }
    if (!std::isfinite(factor)) return Unknown;
    Curvature curvature = Unknown;
    if (others.size() == 1) curvature = of(others[0]);
    if (others.size() == 2 && others[0] == others[1]) curvature = curvatureOfSquare(others[0]);
    return factor < 0.0 ? flipped(curvature) : curvature;
}

Curvature Analysis::curvatureOfSquare(ExpressionIndex e) const {
    const Range r = range(e);
    return convexIf(isAffine(of(e)) || (of(e) == Convex && r.lower >= 0.0) ||
                    (of(e) == Concave && r.upper <= 0.0));
}

Curvature Analysis::curvatureOfPower(ExpressionIndex base, ExpressionIndex exponent) {
    if (of(base) == Constant) {
        const double b = number(base);
        return convexIf((b >= 1.0 && isConvex(of(exponent))) ||
                        (b > 0.0 && b <= 1.0 && isConcave(of(exponent))));
    }
    if (of(exponent) != Constant) return Unknown;
    const double p = number(exponent);
    const Range r = range(base);
    const bool isPositive = r.lower >= 0.0;
    if (p == 1.0) return of(base);
    if (p > 0.0 && p < 1.0) return concaveIf(isPositive && isConcave(of(base)));
    if (p < 0.0) return convexIf(isPositive && isConcave(of(base)));
    if (p > 1.0 && isPositive) return convexIf(isConvex(of(base)));
    const bool isEven = std::fmod(p, 2.0) == 0.0;
    const bool isOdd = std::fabs(std::fmod(p, 2.0)) == 1.0;
    if (p > 1.0 && isEven) {
        return convexIf(isAffine(of(base)) || (of(base) == Concave && r.upper <= 0.0));
    }
    return concaveIf(p > 1.0 && isOdd && r.upper <= 0.0 && isConcave(of(base)));
}

Curvature Analysis::curvatureOfQuotient(ExpressionIndex upper, ExpressionIndex lower) const {
    if (of(lower) == Constant) return number(lower) < 0.0 ? flipped(of(upper)) : of(upper);
    if (of(upper) != Constant) return Unknown;
    // c / x: convex for a positive x that is concave, or a negative one that is convex, turned.
    const Range r = range(lower);
    Curvature reciprocal = Unknown;
    if (r.lower >= 0.0 && isConcave(of(lower))) reciprocal = Convex;
    if (r.upper <= 0.0 && isConvex(of(lower))) reciprocal = Concave;
    return number(upper) < 0.0 ? flipped(reciprocal) : reciprocal;
}

std::size_t Analysis::positionInForm(ExpressionIndex e) {
    return position_.emplace(e, position_.size()).first->second;
}

/// @return false: the term is neither affine nor a multiple of two affine factors.
bool Analysis::addToForm(ExpressionIndex term) {
    double factor = 1.0;
    std::vector<ExpressionIndex> factors{term};
    while (factors.size() == 1 && !isAffine(of(factors[0]))) {
        const ExpressionIndex e = factors[0];
        const auto x = model_.operandsOf(e);
        if (model_.operatorOf(e) == LS_OP_POW) {
            if (of(x[1]) != Constant || number(x[1]) != 2.0) return false;
            factors.assign(2, x[0]);
        } else if (model_.operatorOf(e) == LS_OP_PROD) {
            factors.clear();
            for (const ExpressionIndex k : x) {
                if (of(k) == Constant) {
                    factor *= number(k);
                } else {
                    factors.push_back(k);
                }
            }
        } else {
            return false;
        }
    }
    if (factors.size() == 1) return true;
    if (factors.size() != 2 || !isAffine(of(factors[0])) || !isAffine(of(factors[1]))) return false;
    const std::size_t i = positionInForm(factors[0]);
    const std::size_t j = positionInForm(factors[1]);
    form_.push_back({i, j, 0.5 * factor});
    form_.push_back({j, i, 0.5 * factor});
    return std::isfinite(factor) && position_.size() <= largestForm;
}

Curvature Analysis::curvatureOfForm(ExpressionIndex sum) {
    position_.clear();
    form_.clear();
    for (const ExpressionIndex k : model_.operandsOf(sum)) {
        if (!addToForm(k)) return Unknown;
    }
    const std::size_t n = position_.size();
    formWork_ += n * n * n;
    if (formWork_ > mostFormWork) return Unknown;
    std::vector<double> matrix(n * n, 0.0);
    for (const Entry& entry : form_) matrix[entry.row * n + entry.column] += entry.coefficient;
    if (isSemidefinite(matrix, n)) return Convex;
    for (double& c : matrix) c = -c;
    return concaveIf(isSemidefinite(std::move(matrix), n));
}

}  // namespace

std::vector<CurvatureOfExpression> curvaturesOf(const ClosedModel& model,
                                                const Propagator& propagator,
                                                const std::vector<Value>& values) {
    return Analysis(model, propagator, values).run();
}

}  // namespace engine
