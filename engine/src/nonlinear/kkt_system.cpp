#include "nonlinear/kkt_system.hpp"

#include <cmath>

#include <Eigen/SparseCholesky>
#include <Eigen/SparseCore>

namespace engine {

struct KktSystem::Factor {
    Eigen::SparseMatrix<double> matrix;  ///< lower triangle
    Eigen::SimplicialLDLT<Eigen::SparseMatrix<double>, Eigen::Lower> ldl;
    std::vector<Eigen::Triplet<double>> entries;
    bool isAnalysed = false;
};

KktSystem::KktSystem(Pattern pattern)
    : pattern_(std::move(pattern)), factor_(std::make_unique<Factor>()) {
    const auto n = static_cast<Eigen::Index>(pattern_.nbPrimal + pattern_.nbDual);
    factor_->matrix.resize(n, n);
}

KktSystem::~KktSystem() = default;

bool KktSystem::factorise(const Values& values) {
    auto& entries = factor_->entries;
    entries.clear();
    const auto nbPrimal = static_cast<std::int32_t>(pattern_.nbPrimal);
    for (std::size_t k = 0; k < values.hessian.size(); ++k) {
        entries.emplace_back(pattern_.hessianRow[k], pattern_.hessianColumn[k], values.hessian[k]);
    }
    for (std::int32_t j = 0; j < nbPrimal; ++j) {
        entries.emplace_back(j, j, values.diagonal[static_cast<std::size_t>(j)]);
    }
    for (std::size_t k = 0; k < values.jacobian.size(); ++k) {
        entries.emplace_back(nbPrimal + pattern_.jacobianRow[k], pattern_.jacobianColumn[k],
                             values.jacobian[k]);
    }
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(pattern_.nbDual); ++i) {
        entries.emplace_back(nbPrimal + i, nbPrimal + i, -values.dualShift);
    }
    factor_->matrix.setFromTriplets(entries.begin(), entries.end());
    if (!factor_->isAnalysed) {
        factor_->ldl.analyzePattern(factor_->matrix);
        factor_->isAnalysed = true;
    }
    factor_->ldl.factorize(factor_->matrix);
    if (factor_->ldl.info() != Eigen::Success) return false;
    if (work_ == 0) countWork();
    const auto pivots = factor_->ldl.vectorD();
    std::size_t nbPositive = 0;
    for (Eigen::Index k = 0; k < pivots.size(); ++k) {
        if (!std::isfinite(pivots[k]) || pivots[k] == 0.0) return false;
        nbPositive += pivots[k] > 0.0 ? 1U : 0U;
    }
    return nbPositive == pattern_.nbPrimal;
}

void KktSystem::countWork() {
    const auto& columns = factor_->ldl.matrixL().nestedExpression();
    for (Eigen::Index j = 0; j < columns.outerSize(); ++j) {
        const std::int64_t count = columns.outerIndexPtr()[j + 1] - columns.outerIndexPtr()[j];
        // Some flops cost a visit; each entry is gone through a few times beside.
        work_ += 1 + count * count / 10 + 3 * count;
    }
}

double KktSystem::solve(std::span<double> rightSide) {
    constexpr int nbRefinements = 3;
    constexpr double goodResidual = 1e-12;
    const auto n = static_cast<Eigen::Index>(rightSide.size());
    Eigen::Map<Eigen::VectorXd> side(rightSide.data(), n);
    const double size = std::max(1e-300, side.lpNorm<Eigen::Infinity>());
    Eigen::VectorXd x = factor_->ldl.solve(side);
    double residual = 0.0;
    for (int round = 0; round <= nbRefinements; ++round) {
        const Eigen::VectorXd rest = side - factor_->matrix.selfadjointView<Eigen::Lower>() * x;
        residual = rest.lpNorm<Eigen::Infinity>() / size;
        if (residual < goodResidual || !std::isfinite(residual) || round == nbRefinements) break;
        x += factor_->ldl.solve(rest);
    }
    side = x;
    return residual;
}

}  // namespace engine
