#include "search/boxed_least_squares.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace engine {
namespace {

constexpr int mostNewtonSteps = 12;
constexpr std::size_t mostIterations = 200;
/// Up to here the normal equations are formed and factored.
constexpr std::size_t mostDenseColumns = 200;
/// Wanted parts of the first gradient's norm.
constexpr double precision = 1e-7;
constexpr double innerPrecision = 1e-4;

double squared(const std::vector<double>& x) {
    return std::inner_product(x.begin(), x.end(), x.begin(), 0.0);
}

}  // namespace

/// q(x); leaves the excesses and fit_.
double BoxedLeastSquares::evaluate(const Problem& problem, const std::vector<double>& x) {
    fit_ = 0.0;
    for (std::size_t i = 0; i < excess_.size(); ++i) {
        const double value = problem.constant[i] + problem.a.timesVector(i, x);
        excess_[i] = problem.isEquation[i] != 0 ? value : std::fmax(0.0, value);
        fit_ += 0.5 * excess_[i] * excess_[i];
    }
    double size = 0.0;
    for (std::size_t j = 0; j < x.size(); ++j) {
        const double y = x[j] / problem.scale[j];
        size += y * y;
    }
    return fit_ + 0.5 * problem.damping * size;
}

/// Scaled gradient at x_, where the excesses belong; finds the free columns.
/// @return squared norm over the free columns.
double BoxedLeastSquares::differentiate(const Problem& problem) {
    std::fill(gradient_.begin(), gradient_.end(), 0.0);
    problem.a.addTransposed(excess_, gradient_);
    double norm = 0.0;
    for (std::size_t j = 0; j < x_.size(); ++j) {
        gradient_[j] = gradient_[j] * problem.scale[j] + problem.damping * x_[j] / problem.scale[j];
        const bool isHeld =
            gradient_[j] > 0.0 ? x_[j] <= problem.lower[j] : x_[j] >= problem.upper[j];
        isFree_[j] = isHeld ? 0 : 1;
        if (!isHeld) norm += gradient_[j] * gradient_[j];
    }
    return norm;
}

/// goal_: minimiser over the free columns with the rows exceeded at x_, the box left aside.
void BoxedLeastSquares::aim(const Problem& problem) {
    for (std::size_t j = 0; j < x_.size(); ++j) {
        y_[j] = x_[j] / problem.scale[j];
        descent_[j] = isFree_[j] != 0 ? -gradient_[j] : 0.0;
    }
    x_.size() > mostDenseColumns ? iterate(problem) : solveDirectly(problem);
    for (std::size_t j = 0; j < x_.size(); ++j) goal_[j] = problem.scale[j] * y_[j];
}

/// y_ plus the solution of the normal equations for descent_, by Cholesky's factors. A column that
/// depends on those before it, up to rounding, stays.
void BoxedLeastSquares::solveDirectly(const Problem& problem) {
    const std::size_t n = x_.size();
    normal_.assign(n * n, 0.0);
    for (std::size_t i = 0; i < excess_.size(); ++i) {
        if (isActive(problem, i)) addSquare(problem, i);
    }
    for (std::size_t j = 0; j < n; ++j) {
        // What is held keeps its place: 1 on the diagonal, 0 elsewhere.
        normal_[j * n + j] += isFree_[j] != 0 ? problem.damping : 1.0;
        diagonal_[j] = normal_[j * n + j];
    }
    direction_ = descent_;
    for (std::size_t j = 0; j < n; ++j) eliminate(j);
    for (std::size_t i = n; i-- > 0;) {
        const double* row = normal_.data() + i * n;
        direction_[i] /= row[i];
        for (std::size_t j = 0; j < i; ++j) direction_[j] -= row[j] * direction_[i];
    }
    for (std::size_t j = 0; j < n; ++j) y_[j] += direction_[j];
}

/// Column `j` of Cholesky's factor, with its effect on the rest and on direction_. Rows that it
/// does not touch cost nothing: the equations are sparse.
void BoxedLeastSquares::eliminate(std::size_t j) {
    const std::size_t n = x_.size();
    double& pivot = normal_[j * n + j];
    constexpr double rounding = 1e-13;
    constexpr double huge = 1e100;
    pivot = pivot > rounding * diagonal_[j] ? std::sqrt(pivot) : huge;
    direction_[j] /= pivot;
    for (std::size_t i = j + 1; i < n; ++i) scaled_[i] = normal_[i * n + j] /= pivot;
    for (std::size_t i = j + 1; i < n; ++i) {
        const double factor = scaled_[i];
        if (factor == 0.0) continue;
        double* row = normal_.data() + i * n;
        for (std::size_t k = j + 1; k <= i; ++k) row[k] -= factor * scaled_[k];
        direction_[i] -= factor * direction_[j];
        work_ += static_cast<std::int64_t>(i - j);
    }
}

/// Adds a row's scaled square to the lower half of normal_.
void BoxedLeastSquares::addSquare(const Problem& problem, std::size_t row) {
    const std::size_t n = x_.size();
    const SparseRows& a = problem.a;
    for (std::size_t k = a.start[row]; k < a.start[row + 1]; ++k) {
        const auto j = static_cast<std::size_t>(a.column[k]);
        if (isFree_[j] == 0) continue;
        const double factor = a.coefficient[k] * problem.scale[j];
        for (std::size_t l = a.start[row]; l < a.start[row + 1]; ++l) {
            const auto other = static_cast<std::size_t>(a.column[l]);
            if (other > j || isFree_[other] == 0) continue;
            normal_[j * n + other] += factor * a.coefficient[l] * problem.scale[other];
        }
    }
}

/// y_ by conjugate gradients.
void BoxedLeastSquares::iterate(const Problem& problem) {
    const std::size_t n = x_.size();
    for (std::size_t i = 0; i < excess_.size(); ++i) residual_[i] = -excess_[i];
    direction_ = descent_;
    double norm = squared(descent_);
    const double enough = norm * innerPrecision * innerPrecision;
    for (std::size_t k = 0; k < std::min(mostIterations, 2 * n + 10) && norm > enough; ++k) {
        for (std::size_t j = 0; j < n; ++j) scaled_[j] = problem.scale[j] * direction_[j];
        for (std::size_t i = 0; i < image_.size(); ++i) {
            image_[i] = isActive(problem, i) ? problem.a.timesVector(i, scaled_) : 0.0;
        }
        work_ += static_cast<std::int64_t>(2 * problem.a.column.size());
        const double curvature = squared(image_) + problem.damping * squared(direction_);
        if (!(curvature > 0.0)) break;
        const double length = norm / curvature;
        for (std::size_t j = 0; j < n; ++j) y_[j] += length * direction_[j];
        for (std::size_t i = 0; i < image_.size(); ++i) residual_[i] -= length * image_[i];
        const double before = norm;
        norm = computeDescent(problem);
        for (std::size_t j = 0; j < n; ++j) {
            direction_[j] = descent_[j] + norm / before * direction_[j];
        }
    }
}

/// Scaled negative gradient at y_ of the quadratic that `aim` minimises. @return its squared norm.
double BoxedLeastSquares::computeDescent(const Problem& problem) {
    std::fill(scaled_.begin(), scaled_.end(), 0.0);
    problem.a.addTransposed(residual_, scaled_);
    for (std::size_t j = 0; j < y_.size(); ++j) {
        const double descent = problem.scale[j] * scaled_[j] - problem.damping * y_[j];
        descent_[j] = isFree_[j] != 0 ? descent : 0.0;
    }
    return squared(descent_);
}

/// Goes from x_ along the projected way to goal_. @return whether that lowered q.
bool BoxedLeastSquares::stepTowards(const Problem& problem) {
    constexpr int mostHalvings = 20;
    double part = 1.0;
    for (int n = 0; n < mostHalvings; ++n, part *= 0.5) {
        for (std::size_t j = 0; j < x_.size(); ++j) {
            trial_[j] =
                std::clamp(x_[j] + part * (goal_[j] - x_[j]), problem.lower[j], problem.upper[j]);
        }
        const double reached = evaluate(problem, trial_);
        if (!(reached < value_)) continue;
        std::swap(x_, trial_);
        value_ = reached;
        return true;
    }
    value_ = evaluate(problem, x_);
    return false;
}

double BoxedLeastSquares::solve(const Problem& problem, std::vector<double>& x) {
    const std::size_t n = problem.scale.size();
    const std::size_t m = problem.a.nbRows();
    for (auto* columns :
         {&x_, &trial_, &goal_, &gradient_, &y_, &direction_, &descent_, &scaled_, &diagonal_}) {
        columns->assign(n, 0.0);
    }
    for (auto* rows : {&excess_, &residual_, &image_}) rows->assign(m, 0.0);
    isFree_.assign(n, 1);
    value_ = evaluate(problem, x_);
    double first = 0.0;
    for (int k = 0; k < mostNewtonSteps; ++k) {
        const double norm = differentiate(problem);
        if (k == 0) first = norm;
        if (norm <= precision * precision * first) break;
        aim(problem);
        if (!stepTowards(problem)) break;
    }
    x = x_;
    return fit_;
}

}  // namespace engine
