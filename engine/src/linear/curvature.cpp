#include "linear/curvature.hpp"

#include <algorithm>
#include <cmath>
#include <map>

#include "operators/operator_row.hpp"

namespace engine {
namespace {

using enum Curvature;

/// Larger quadratic forms are left unknown: factoring them would take too long.
constexpr std::size_t largestForm = 400;
constexpr std::size_t mostFormWork = 200'000'000;

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
    struct Term {
        ExpressionIndex expression;
        double factor;
    };
    using LinearPart = std::map<ExpressionIndex, double>;  ///< coefficients of decisions

    [[nodiscard]] Curvature of(ExpressionIndex e) const {
        return result_[static_cast<std::size_t>(e)].curvature;
    }
    [[nodiscard]] double number(ExpressionIndex e) const {
        return values_[static_cast<std::size_t>(e)].asDouble();
    }
    [[nodiscard]] Curvature curvatureOf(ExpressionIndex e) const;
    Curvature curvatureOfForm(ExpressionIndex sum);
    [[nodiscard]] std::vector<ExpressionIndex> factorsOf(ExpressionIndex e, double& factor) const;
    bool linearPartOf(ExpressionIndex affine, LinearPart& part) const;
    bool addProduct(ExpressionIndex a, ExpressionIndex b, double factor);
    bool addToForm(ExpressionIndex sum);
    std::size_t positionInForm(ExpressionIndex e);

    const ClosedModel& model_;
    const Propagator& propagator_;
    const std::vector<Value>& values_;
    std::vector<CurvatureOfExpression> result_;
    std::map<ExpressionIndex, std::size_t> position_;  ///< of decisions in the form
    struct Entry {
        std::size_t row;
        std::size_t column;
        double coefficient;
    };
    std::vector<Entry> form_;
    std::size_t formWork_ = 0;
};

Curvature Analysis::curvatureOf(ExpressionIndex e) const {
    if (model_.decisionOf[static_cast<std::size_t>(e)] >= 0) return Affine;
    const CurvatureOperands x(model_, e, values_, result_, propagator_.ranges());
    const auto isConstant = [](Curvature c) { return c == Constant; };
    return x.all(isConstant) ? Constant : rowOf(model_.operatorOf(e)).curvature(x);
}

std::size_t Analysis::positionInForm(ExpressionIndex e) {
    return position_.emplace(e, position_.size()).first->second;
}

/// factor * the product of what is not constant among the operands of `e`.
std::vector<ExpressionIndex> Analysis::factorsOf(ExpressionIndex e, double& factor) const {
    std::vector<ExpressionIndex> factors;
    for (const ExpressionIndex x : model_.operandsOf(e)) {
        if (of(x) == Constant) {
            factor *= number(x);
        } else {
            factors.push_back(x);
        }
    }
    return factors;
}

/// The linear part of an affine expression, over decisions. @return false: it has another shape.
bool Analysis::linearPartOf(ExpressionIndex affine, LinearPart& part) const {
    std::vector<Term> open{{affine, 1.0}};
    while (!open.empty()) {
        const auto [e, factor] = open.back();
        open.pop_back();
        const auto x = model_.operandsOf(e);
        const ls_operator op = model_.operatorOf(e);
        double total = factor;
        if (of(e) == Constant) continue;
        if (model_.decisionOf[static_cast<std::size_t>(e)] >= 0) {
            part[e] += factor;
        } else if (op == LS_OP_SUM || op == LS_OP_SUB) {
            for (std::size_t k = 0; k < x.size(); ++k) {
                open.push_back({x[k], op == LS_OP_SUB && k > 0 ? -factor : factor});
            }
        } else if (op == LS_OP_DIV && of(x[1]) == Constant) {
            open.push_back({x[0], factor / number(x[1])});
        } else if (op == LS_OP_PROD) {
            const auto factors = factorsOf(e, total);
            if (factors.size() != 1) return false;
            open.push_back({factors[0], total});
        } else {
            return false;
        }
    }
    return part.size() <= largestForm;
}

bool Analysis::addProduct(ExpressionIndex a, ExpressionIndex b, double factor) {
    LinearPart first;
    LinearPart second;
    if (!isAffine(of(a)) || !isAffine(of(b)) || !linearPartOf(a, first)) return false;
    if (a != b && !linearPartOf(b, second)) return false;
    for (const auto& [x, c] : first) {
        for (const auto& [y, d] : a == b ? first : second) {
            const std::size_t i = positionInForm(x);
            const std::size_t j = positionInForm(y);
            form_.push_back({i, j, 0.5 * factor * c * d});
            form_.push_back({j, i, 0.5 * factor * c * d});
        }
    }
    formWork_ += first.size() * (first.size() + second.size());
    return std::isfinite(factor) && position_.size() <= largestForm && formWork_ <= mostFormWork;
}

/// @return false: the sum is no quadratic polynomial.
bool Analysis::addToForm(ExpressionIndex sum) {
    std::vector<Term> open{{sum, 1.0}};
    while (!open.empty()) {
        const auto [e, factor] = open.back();
        open.pop_back();
        if (isAffine(of(e))) continue;
        const auto x = model_.operandsOf(e);
        const ls_operator op = model_.operatorOf(e);
        double total = factor;
        if (op == LS_OP_SUM || op == LS_OP_SUB) {
            for (std::size_t k = 0; k < x.size(); ++k) {
                open.push_back({x[k], op == LS_OP_SUB && k > 0 ? -factor : factor});
            }
        } else if (op == LS_OP_DIV && of(x[1]) == Constant) {
            open.push_back({x[0], factor / number(x[1])});
        } else if (op == LS_OP_POW && of(x[1]) == Constant && number(x[1]) == 2.0) {
            if (!addProduct(x[0], x[0], factor)) return false;
        } else if (op == LS_OP_PROD) {
            const auto factors = factorsOf(e, total);
            if (factors.size() == 1) {
                open.push_back({factors[0], total});
            } else if (factors.size() != 2 || !addProduct(factors[0], factors[1], total)) {
                return false;
            }
        } else {
            return false;
        }
    }
    return true;
}

Curvature Analysis::curvatureOfForm(ExpressionIndex sum) {
    position_.clear();
    form_.clear();
    if (!addToForm(sum)) return Unknown;
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
