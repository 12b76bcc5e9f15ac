#include "global/cones.hpp"

#include <algorithm>
#include <cmath>
#include <optional>

#include "global/form_arithmetic.hpp"

namespace engine {
namespace {

/// Levels this far beyond a plane deserve it; relative above 1.
constexpr double leastViolation = 1e-8;
/// Planes are loosened by this against the rounding of their coefficients.
constexpr double rounding = 1e-11;

class RowReader {
public:
    explicit RowReader(const FactorableModel& model) : model_(model) {}

    /// The row `sign * row <= upper` as a cone.
    std::optional<Cone> coneOf(std::size_t row, double sign, double upper);

private:
    [[nodiscard]] const Definition* definitionOf(std::int32_t column) const {
        const std::int32_t k = model_.origin[static_cast<std::size_t>(column)].definition;
        return k < 0 ? nullptr : &model_.definition[static_cast<std::size_t>(k)];
    }
    [[nodiscard]] bool isNeverNegative(std::int32_t column) const {
        return model_.linear.lower[static_cast<std::size_t>(column)] >= 0.0;
    }
    bool addTerm(const Definition& definition, double coefficient);

    const FactorableModel& model_;
    Cone cone_;
};

bool RowReader::addTerm(const Definition& definition, double coefficient) {
    const std::int32_t x = definition.first;
    const std::int32_t y = definition.second;
    const bool isHead = coefficient < 0.0;
    const double root = std::sqrt(std::fabs(coefficient));
    if (isHead && !cone_.head.column.empty()) return false;
    if (definition.kind == Definition::Kind::Curve && definition.curve.kind == Curve::Kind::Power &&
        definition.curve.exponent == 2.0) {
        if (!isHead) {
            cone_.parts.push_back(scaled(columnForm(x), root));
        } else if (isNeverNegative(x)) {
            cone_.head = scaled(columnForm(x), root);
        }
        return !isHead || isNeverNegative(x);
    }
    const bool isProductOfSides = definition.kind == Definition::Kind::Product && isHead &&
                                  isNeverNegative(x) && isNeverNegative(y);
    if (!isProductOfSides) return false;
    cone_.head = scaled(sumOf(columnForm(x), columnForm(y), 1.0), 0.5 * root);
    cone_.parts.push_back(scaled(sumOf(columnForm(x), columnForm(y), -1.0), 0.5 * root));
    return true;
}

std::optional<Cone> RowReader::coneOf(std::size_t row, double sign, double upper) {
    const LinearModel& m = model_.linear;
    cone_ = {{}, -upper, {}};
    if (!(upper <= 0.0)) return std::nullopt;
    const auto last = static_cast<std::size_t>(m.rowStart[row + 1]);
    for (auto k = static_cast<std::size_t>(m.rowStart[row]); k < last; ++k) {
        const Definition* definition = definitionOf(m.column[k]);
        if (definition == nullptr || !addTerm(*definition, sign * m.coefficient[k])) {
            return std::nullopt;
        }
    }
    if (cone_.head.column.empty() || cone_.parts.empty()) return std::nullopt;
    return std::move(cone_);
}

}  // namespace

std::vector<Cone> conesOf(const FactorableModel& model) {
    std::vector<Cone> cones;
    RowReader reader(model);
    for (std::size_t i = 0; i < model.linear.nbRows(); ++i) {
        for (const double sign : {1.0, -1.0}) {
            const double upper = sign > 0.0 ? model.linear.rowUpper[i] : -model.linear.rowLower[i];
            if (std::isinf(upper)) continue;
            if (auto cone = reader.coneOf(i, sign, upper)) cones.push_back(std::move(*cone));
        }
    }
    return cones;
}

std::size_t addPlanes(std::span<const Cone> cones, std::span<const double> levels, Planes which,
                      std::vector<Cut>& cuts) {
    const std::size_t before = cuts.size();
    FormSum sum;
    for (const Cone& cone : cones) {
        double square = cone.constant;
        std::vector<double> value;
        for (const LinearForm& part : cone.parts) {
            value.push_back(valueOf(part, levels));
            square += value.back() * value.back();
        }
        const double norm = std::sqrt(square);
        if (!std::isfinite(norm) || !(norm > 0.0)) continue;
        const double beyond = norm - valueOf(cone.head, levels);
        if (which == Planes::Violated && !(beyond > leastViolation * std::max(1.0, norm))) continue;
        for (std::size_t k = 0; k < value.size(); ++k) sum.add(cone.parts[k], value[k] / norm);
        sum.add(cone.head, -1.0);
        sum.add(constantForm(cone.constant / norm - rounding * norm), 1.0);
        cuts.push_back(sum.take());
    }
    return cuts.size() - before;
}

}  // namespace engine
