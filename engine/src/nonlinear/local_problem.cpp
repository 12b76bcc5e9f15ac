#include "nonlinear/local_problem.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "model/value.hpp"

namespace engine {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Bounds as near as that leave no interior to go through: the decision is fixed.
constexpr double leastWidth = 1e-11;

double scaled(double tolerance, double size) {
    return tolerance * std::max(1.0, std::fabs(size));
}

}  // namespace

LocalProblem::LocalProblem(const NonlinearProblem& problem)
    : problem_(problem), weight_(problem.program.nbFunctions(), 0.0) {
    absorbBounds();
    findColumns();
    findEntries();
    entries_.resize(problem_.program.hessianRow().size());
}

/// Linear rows with one decision become bounds of it.
void LocalProblem::absorbBounds() {
    NonlinearProgram& program = problem_.program;
    level_.resize(program.nbVariables());
    const auto isFixed = [this](std::size_t j) { return !(problem_.lower[j] < problem_.upper[j]); };
    for (std::size_t j = 0; j < level_.size(); ++j) {
        level_[j] = isFixed(j)
                        ? problem_.lower[j]
                        : std::clamp(problem_.start[j], problem_.lower[j], problem_.upper[j]);
    }
    isAbsorbed_.assign(program.nbRows(), 0);
    program.moveTo(level_);
    const auto slopes = program.computeJacobian();
    for (std::size_t i = 0; i < program.nbRows(); ++i) {
        if (!program.isLinear(i) || program.start()[i + 1] != program.start()[i] + 1) continue;
        const std::size_t k = program.start()[i];
        const auto j = static_cast<std::size_t>(program.column()[k]);
        const double slope = slopes[k];
        if (slope == 0.0 || isFixed(j) || !std::isfinite(program.valueOf(i))) continue;
        const double rest = program.valueOf(i) - slope * level_[j];
        double low = (program.rowLower(i) - rest) / slope;
        double high = (program.rowUpper(i) - rest) / slope;
        if (slope < 0.0) std::swap(low, high);
        problem_.lower[j] = std::max(problem_.lower[j], low);
        problem_.upper[j] = std::min(problem_.upper[j], high);
        isAbsorbed_[i] = 1;
        if (problem_.lower[j] > problem_.upper[j]) {
            const double gap = problem_.lower[j] - problem_.upper[j];
            isInfeasible_ =
                isInfeasible_ || gap * std::fabs(slope) > scaled(relationTolerance, low);
            problem_.lower[j] = problem_.upper[j] = 0.5 * (problem_.lower[j] + problem_.upper[j]);
        }
    }
}

void LocalProblem::findColumns() {
    const NonlinearProgram& program = problem_.program;
    std::vector<std::uint8_t> isUsed(program.nbVariables(), 0);
    for (const std::int32_t j : program.column()) isUsed[static_cast<std::size_t>(j)] = 1;
    columnOf_.assign(program.nbVariables(), -1);
    for (std::size_t j = 0; j < program.nbVariables(); ++j) {
        const double low = problem_.lower[j];
        const double high = problem_.upper[j];
        if (!(high - low > scaled(leastWidth, low))) {
            level_[j] = low == high ? low : 0.5 * (low + high);
            continue;
        }
        level_[j] = std::clamp(problem_.start[j], low, high);
        if (!std::isfinite(level_[j])) level_[j] = std::clamp(0.0, low, high);
        if (isUsed[j] == 0) continue;
        columnOf_[j] = static_cast<std::int32_t>(nbColumns());
        decision_.push_back(static_cast<std::int32_t>(j));
        lower_.push_back(low <= -farBound ? -infinity : low);
        upper_.push_back(high >= farBound ? infinity : high);
    }
}

void LocalProblem::findEntries() {
    NonlinearProgram& program = problem_.program;
    program.moveTo(level_);
    for (std::size_t i = 0; i < program.nbRows(); ++i) {
        if (isAbsorbed_[i] != 0) continue;
        bool hasColumn = false;
        for (std::size_t k = program.start()[i]; k < program.start()[i + 1]; ++k) {
            const std::int32_t column = columnOf_[static_cast<std::size_t>(program.column()[k])];
            if (column < 0) continue;
            hasColumn = true;
            jacobianRow_.push_back(static_cast<std::int32_t>(nbRows()));
            jacobianColumn_.push_back(column);
            jacobianEntry_.push_back(k);
        }
        if (hasColumn) {
            row_.push_back(static_cast<std::int32_t>(i));
            rowLower_.push_back(program.rowLower(i));
            rowUpper_.push_back(program.rowUpper(i));
        } else {
            // The sides of a row are not known here; what is as far as that is violated for sure.
            isInfeasible_ = isInfeasible_ || program.violationOf(i) > 1.0;
        }
    }
    for (std::size_t k = 0; k < program.hessianRow().size(); ++k) {
        const std::int32_t a = columnOf_[static_cast<std::size_t>(program.hessianRow()[k])];
        const std::int32_t b = columnOf_[static_cast<std::size_t>(program.hessianColumn()[k])];
        if (a < 0 || b < 0) continue;
        hessianRow_.push_back(std::max(a, b));
        hessianColumn_.push_back(std::min(a, b));
        hessianEntry_.push_back(k);
    }
}

std::size_t LocalProblem::nbEquations() const {
    std::size_t n = 0;
    for (std::size_t i = 0; i < nbRows(); ++i) n += rowLower_[i] == rowUpper_[i] ? 1U : 0U;
    return n;
}

bool LocalProblem::hasObjective() const {
    return problem_.objective >= 0 &&
           static_cast<std::size_t>(problem_.objective) < problem_.program.model().objective.size();
}

double LocalProblem::sign() const {
    const auto k = static_cast<std::size_t>(problem_.objective);
    return problem_.program.model().objective[k].maximise ? -1.0 : 1.0;
}

std::vector<double> LocalProblem::start() const {
    std::vector<double> x(nbColumns());
    for (std::size_t j = 0; j < x.size(); ++j) {
        x[j] = level_[static_cast<std::size_t>(decision_[j])];
    }
    return x;
}

std::int64_t LocalProblem::workPerIteration() const {
    // A sparse factorisation fills in; a solver's own vectors cost too.
    const std::size_t fill =
        6 * (hessianRow_.size() + jacobianRow_.size()) + 30 * (nbColumns() + nbRows());
    return static_cast<std::int64_t>(5000 + problem_.program.work() + fill);
}

void LocalProblem::moveTo(std::span<const double> x) {
    for (std::size_t j = 0; j < x.size(); ++j) {
        level_[static_cast<std::size_t>(decision_[j])] = x[j];
    }
    problem_.program.moveTo(level_);
}

double LocalProblem::cost() const {
    return hasObjective() ? sign() * problem_.program.valueOf(objective()) : 0.0;
}

void LocalProblem::gradient(std::span<double> values) {
    std::fill(values.begin(), values.end(), 0.0);
    if (!hasObjective()) return;
    NonlinearProgram& program = problem_.program;
    const auto slopes = program.computeJacobian();
    for (std::size_t k = program.start()[objective()]; k < program.start()[objective() + 1]; ++k) {
        const std::int32_t column = columnOf_[static_cast<std::size_t>(program.column()[k])];
        if (column >= 0) values[static_cast<std::size_t>(column)] = sign() * slopes[k];
    }
}

bool LocalProblem::rows(std::span<double> values) const {
    bool isFinite = true;
    for (std::size_t i = 0; i < nbRows(); ++i) {
        values[i] = problem_.program.valueOf(static_cast<std::size_t>(row_[i]));
        isFinite = isFinite && std::isfinite(values[i]);
    }
    return isFinite;
}

void LocalProblem::jacobian(std::span<double> values) {
    const auto slopes = problem_.program.computeJacobian();
    for (std::size_t k = 0; k < values.size(); ++k) values[k] = slopes[jacobianEntry_[k]];
}

void LocalProblem::hessian(double costWeight, std::span<const double> rowWeight,
                           std::span<double> values) {
    std::fill(weight_.begin(), weight_.end(), 0.0);
    for (std::size_t i = 0; i < nbRows(); ++i) {
        weight_[static_cast<std::size_t>(row_[i])] = rowWeight[i];
    }
    if (hasObjective()) weight_[objective()] = sign() * costWeight;
    problem_.program.computeHessian(weight_, entries_);
    for (std::size_t k = 0; k < values.size(); ++k) values[k] = entries_[hessianEntry_[k]];
}

std::vector<double> LocalProblem::levels(std::span<const double> x) const {
    std::vector<double> all = level_;
    for (std::size_t j = 0; j < x.size(); ++j) {
        const auto d = static_cast<std::size_t>(decision_[j]);
        all[d] = std::clamp(x[j], problem_.lower[d], problem_.upper[d]);
    }
    return all;
}

std::vector<double> LocalProblem::multipliers(std::span<const double> y) const {
    std::vector<double> all(problem_.program.nbRows(), 0.0);
    for (std::size_t i = 0; i < y.size(); ++i) all[static_cast<std::size_t>(row_[i])] = y[i];
    return all;
}

double LocalProblem::violation() const {
    double worst = 0.0;
    for (std::size_t i = 0; i < problem_.program.nbRows(); ++i) {
        worst = std::max(worst, problem_.program.violationOf(i));
    }
    return worst;
}

}  // namespace engine
