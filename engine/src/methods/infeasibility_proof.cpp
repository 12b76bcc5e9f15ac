#include "methods/infeasibility_proof.hpp"

#include <algorithm>
#include <cmath>

#include "back_ends/rational_certificate.hpp"
#include "methods/far_bounds.hpp"
#include "operators/range.hpp"

namespace engine {
namespace {

bool isProof(const LinearModel& model, const Box& box, std::span<const double> multipliers) {
    return provesInfeasibility(model, box, multipliers) ||
           provesInfeasibilityRationally(model, box, multipliers);
}

/// The continuous model in which every side of a row may be missed, at a cost: the violation,
/// measured by the row's largest coefficient. The columns of `model` come first.
class ElasticModel {
public:
    ElasticModel(const LinearModel& model, const Box& box);
    [[nodiscard]] ExactProblem problem() const {
        return {elastic_,         cost_, elastic_.lower, elastic_.upper, elastic_.rowLower,
                elastic_.rowUpper};
    }

private:
    void addSlack(double coefficient);

    LinearModel elastic_;
    std::vector<double> cost_;
};

ElasticModel::ElasticModel(const LinearModel& model, const Box& box) {
    elastic_.lower.assign(box.lower.begin(), box.lower.end());
    elastic_.upper.assign(box.upper.begin(), box.upper.end());
    cost_.assign(model.nbColumns(), 0.0);
    for (std::size_t i = 0; i < model.nbRows(); ++i) {
        double size = 0.0;
        for (auto k = model.rowStart[i]; k < model.rowStart[i + 1]; ++k) {
            const auto entry = static_cast<std::size_t>(k);
            elastic_.column.push_back(model.column[entry]);
            elastic_.coefficient.push_back(model.coefficient[entry]);
            size = std::fmax(size, std::fabs(model.coefficient[entry]));
        }
        if (size <= 0.0) size = 1.0;
        if (std::isfinite(model.rowLower[i])) addSlack(size);
        if (std::isfinite(model.rowUpper[i])) addSlack(-size);
        elastic_.rowStart.push_back(static_cast<std::int32_t>(elastic_.column.size()));
        elastic_.rowLower.push_back(model.rowLower[i] - model.tolerance[i]);
        elastic_.rowUpper.push_back(model.rowUpper[i] + model.tolerance[i]);
    }
    elastic_.isInteger.assign(elastic_.nbColumns(), 0);
}

void ElasticModel::addSlack(double coefficient) {
    elastic_.column.push_back(static_cast<std::int32_t>(elastic_.nbColumns()));
    elastic_.coefficient.push_back(coefficient);
    elastic_.lower.push_back(0.0);
    elastic_.upper.push_back(infinity);
    cost_.push_back(1.0);
}

}  // namespace

bool findInfeasibilityProof(const LinearModel& model, const Box& box,
                            std::span<const double> multipliers,
                            const std::function<ExactAnswer(const ExactProblem&)>& solve) {
    if (isProof(model, box, multipliers)) return true;
    const ElasticModel elastic(model, box);
    ExactProblem problem = elastic.problem();
    constexpr double usualTolerance = 1e-7;
    const bool opened = openFarBounds(problem, usualTolerance);
    if (isProof(model, box, solve(problem).multipliers)) return true;
    return opened && isProof(model, box, solve(elastic.problem()).multipliers);
}

}  // namespace engine
