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

/// Drops the rows that are marked.
void dropRows(LinearModel& m, const std::vector<std::uint8_t>& isDropped) {
    std::size_t nbRows = 0;
    std::size_t nbEntries = 0;
    std::size_t first = 0;
    for (std::size_t i = 0; i < isDropped.size(); ++i) {
        const auto last = static_cast<std::size_t>(m.rowStart[i + 1]);
        if (isDropped[i] == 0) {
            for (std::size_t k = first; k < last; ++k, ++nbEntries) {
                m.column[nbEntries] = m.column[k];
                m.coefficient[nbEntries] = m.coefficient[k];
            }
            m.rowLower[nbRows] = m.rowLower[i];
            m.rowUpper[nbRows] = m.rowUpper[i];
            m.tolerance[nbRows] = m.tolerance[i];
            m.rowStart[++nbRows] = static_cast<std::int32_t>(nbEntries);
        }
        first = last;
    }
    m.rowStart.resize(nbRows + 1);
    m.rowLower.resize(nbRows);
    m.rowUpper.resize(nbRows);
    m.tolerance.resize(nbRows);
    m.column.resize(nbEntries);
    m.coefficient.resize(nbEntries);
}

void dropUnusedDefinitions(FactorableModel& model) {
    std::vector<std::uint8_t> isUsed(model.linear.nbColumns(), 0);
    const auto use = [&isUsed](std::int32_t column) {
        if (column != noColumn) isUsed[static_cast<std::size_t>(column)] = 1;
    };
    const auto useAll = [&use](const LinearForm& form) {
        for (const std::int32_t column : form.column) use(column);
    };
    for (const std::int32_t column : model.linear.column) use(column);
    for (const LinearObjective& objective : model.linear.objective) useAll(objective.form);
    for (const CurvedForm& curved : model.curved) useAll(curved.form);
    for (const Cone& cone : model.cone) {
        useAll(cone.head);
        for (const LinearForm& part : cone.parts) useAll(part);
    }
    std::vector<Definition> kept;
    // Results come after what they are made of.
    for (auto d = model.definition.rbegin(); d != model.definition.rend(); ++d) {
        if (isUsed[static_cast<std::size_t>(d->result)] == 0) continue;
        use(d->first);
        use(d->second);
        for (const LinearForm& form : d->forms) useAll(form);
        kept.push_back(std::move(*d));
    }
    std::reverse(kept.begin(), kept.end());
    model.definition = std::move(kept);
    for (ColumnOrigin& origin : model.origin) origin.definition = -1;
    for (std::size_t k = 0; k < model.definition.size(); ++k) {
        model.origin[static_cast<std::size_t>(model.definition[k].result)].definition =
            static_cast<std::int32_t>(k);
    }
}

double normOf(const Cone& cone, std::span<const double> levels) {
    double square = cone.constant;
    for (const LinearForm& part : cone.parts) {
        const double value = valueOf(part, levels);
        square += value * value;
    }
    return std::sqrt(square);
}

}  // namespace

void takeConesOut(FactorableModel& model) {
    LinearModel& m = model.linear;
    RowReader reader(model);
    std::vector<std::uint8_t> isCone(m.nbRows(), 0);
    for (std::size_t i = 0; i < m.nbRows(); ++i) {
        const bool hasUpper = !std::isinf(m.rowUpper[i]);
        if (hasUpper == !std::isinf(m.rowLower[i])) continue;
        auto cone =
            reader.coneOf(i, hasUpper ? 1.0 : -1.0, hasUpper ? m.rowUpper[i] : -m.rowLower[i]);
        if (!cone) continue;
        model.cone.push_back(std::move(*cone));
        isCone[i] = 1;
    }
    if (model.cone.empty()) return;
    dropRows(m, isCone);
    dropUnusedDefinitions(model);
}

bool raiseHeads(std::span<const Cone> cones, std::span<double> levels) {
    bool isAnyRaised = false;
    for (const Cone& cone : cones) {
        if (cone.head.column.size() != 1) continue;
        const double least = normOf(cone, levels) / cone.head.coefficient.front();
        double& head = levels[static_cast<std::size_t>(cone.head.column.front())];
        if (!std::isfinite(least) || head >= least) continue;
        head = least;
        isAnyRaised = true;
    }
    return isAnyRaised;
}

std::size_t addPlanes(std::span<const Cone> cones, std::span<const double> levels, Planes which,
                      std::vector<Cut>& cuts) {
    const std::size_t before = cuts.size();
    FormSum sum;
    for (const Cone& cone : cones) {
        const double norm = normOf(cone, levels);
        if (!std::isfinite(norm) || !(norm > 0.0)) continue;
        const double beyond = norm - valueOf(cone.head, levels);
        if (which == Planes::Violated && !(beyond > leastViolation * std::max(1.0, norm))) continue;
        for (const LinearForm& part : cone.parts) sum.add(part, valueOf(part, levels) / norm);
        sum.add(cone.head, -1.0);
        sum.add(constantForm(cone.constant / norm - rounding * norm), 1.0);
        cuts.push_back(sum.take());
    }
    return cuts.size() - before;
}

}  // namespace engine
