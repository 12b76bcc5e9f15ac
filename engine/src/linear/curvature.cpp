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
    [[nodiscard]] Curvature of(ExpressionIndex e) const {
        return result_[static_cast<std::size_t>(e)].curvature;
    }
    [[nodiscard]] double number(ExpressionIndex e) const {
        return values_[static_cast<std::size_t>(e)].asDouble();
    }
    [[nodiscard]] Curvature curvatureOf(ExpressionIndex e) const;
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

Curvature Analysis::curvatureOf(ExpressionIndex e) const {
    if (model_.decisionOf[static_cast<std::size_t>(e)] >= 0) return Affine;
    const CurvatureOperands x(model_, e, values_, result_, propagator_.ranges());
    const auto isConstant = [](Curvature c) { return c == Constant; };
    return x.all(isConstant) ? Constant : rowOf(model_.operatorOf(e)).curvature(x);
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
