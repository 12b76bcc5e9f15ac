// The rational certificate over GMP.
#include "back_ends/rational_certificate.hpp"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include <gmpxx.h>

#include "back_ends/gmp_elimination.hpp"
#include "operators/range.hpp"

namespace engine {
namespace {

/// Multipliers whose terms are this small a share of the largest are a solver's rounding errors.
constexpr double leastShare = 1e-9;
/// What a combination leaves of a column's terms when it cancels but for a solver's tolerance.
constexpr double leftOver = 1e-7;

/// The multipliers under one sign, cleaned of rounding errors.
class Certificate {
public:
    Certificate(const LinearModel& model, const Box& box, std::span<const double> multipliers,
                double sign, double share)
        : model_(model), box_(box) {
        choose(multipliers, sign, share);
    }
    bool isProof();

private:
    struct Column {
        double total = 0.0;  ///< of the combination
        double size = 0.0;   ///< of its terms
    };

    /// The side of a row that a multiplier asks for, not relaxed; infinite: none.
    [[nodiscard]] double sideOf(std::size_t row, int sign) const {
        return sign > 0 ? model_.rowLower[row] : model_.rowUpper[row];
    }
    void choose(std::span<const double> multipliers, double sign, double share);
    [[nodiscard]] std::vector<Column> combined() const;
    [[nodiscard]] double marginOf(const std::vector<Column>& columns) const;
    [[nodiscard]] double boundOf(std::size_t j) const {
        return std::fmax(std::fabs(box_.lower[j]), std::fabs(box_.upper[j]));
    }
    [[nodiscard]] std::vector<std::uint8_t> columnsToCancel() const;
    [[nodiscard]] std::vector<mpq_class> repaired(const std::vector<std::uint8_t>& cancels) const;
    [[nodiscard]] bool exceedsBox(const std::vector<mpq_class>& multipliers) const;

    const LinearModel& model_;
    const Box& box_;
    std::vector<std::size_t> row_;  ///< combined, ascending
    std::vector<double> value_;     ///< [row_.size()] multipliers, none is 0
};

void Certificate::choose(std::span<const double> multipliers, double sign, double share) {
    std::vector<double> weight(model_.nbRows(), 0.0);
    for (std::size_t i = 0; i < model_.nbRows(); ++i) {
        const double y = sign * multipliers[i];
        if (y == 0.0 || !std::isfinite(y) || std::isinf(sideOf(i, y > 0.0 ? 1 : -1))) continue;
        for (auto k = model_.rowStart[i]; k < model_.rowStart[i + 1]; ++k) {
            weight[i] = std::fmax(weight[i],
                                  std::fabs(y * model_.coefficient[static_cast<std::size_t>(k)]));
        }
    }
    const double largest = weight.empty() ? 0.0 : *std::max_element(weight.begin(), weight.end());
    for (std::size_t i = 0; i < model_.nbRows(); ++i) {
        if (weight[i] <= share * largest) continue;
        row_.push_back(i);
        value_.push_back(sign * multipliers[i]);
    }
}

std::vector<Certificate::Column> Certificate::combined() const {
    std::vector<Column> columns(model_.nbColumns());
    for (std::size_t r = 0; r < row_.size(); ++r) {
        for (auto k = model_.rowStart[row_[r]]; k < model_.rowStart[row_[r] + 1]; ++k) {
            const auto entry = static_cast<std::size_t>(k);
            const double term = value_[r] * model_.coefficient[entry];
            Column& column = columns[static_cast<std::size_t>(model_.column[entry])];
            column.total += term;
            column.size += std::fabs(term);
        }
    }
    return columns;
}

/// By how much the combination asks for more than the box gives, if columns that nearly cancel did
/// so; in doubles.
double Certificate::marginOf(const std::vector<Column>& columns) const {
    double margin = 0.0;
    for (std::size_t r = 0; r < row_.size(); ++r) {
        const double y = value_[r];
        margin += y * sideOf(row_[r], y > 0.0 ? 1 : -1) - std::fabs(y) * model_.tolerance[row_[r]];
    }
    for (std::size_t j = 0; j < columns.size(); ++j) {
        const auto [total, size] = columns[j];
        if (std::fabs(total) > leftOver * size) {
            margin -= total * (total > 0.0 ? box_.upper[j] : box_.lower[j]);
        }
    }
    return margin;
}

/// [nbColumns] columns that nearly cancel and whose bounds are so large that it matters; empty when
/// there is no proof even if all of them cancel.
std::vector<std::uint8_t> Certificate::columnsToCancel() const {
    const std::vector<Column> columns = combined();
    const double margin = marginOf(columns);
    if (!(margin > 0.0)) return {};
    const double share = 1e-3 * margin / static_cast<double>(columns.size());
    std::vector<std::uint8_t> cancels(columns.size(), 0);
    for (std::size_t j = 0; j < columns.size(); ++j) {
        const auto [total, size] = columns[j];
        const bool isSmall = std::fabs(total) <= leftOver * size;
        if (isSmall && size > 0.0 && !(leftOver * size * boundOf(j) <= share)) cancels[j] = 1;
    }
    return cancels;
}

std::vector<mpq_class> Certificate::repaired(const std::vector<std::uint8_t>& cancels) const {
    std::vector<std::vector<std::pair<std::int32_t, double>>> terms(cancels.size());
    for (std::size_t r = 0; r < row_.size(); ++r) {
        for (auto k = model_.rowStart[row_[r]]; k < model_.rowStart[row_[r] + 1]; ++k) {
            const auto entry = static_cast<std::size_t>(k);
            const auto j = static_cast<std::size_t>(model_.column[entry]);
            if (cancels[j] == 0) continue;
            terms[j].emplace_back(static_cast<std::int32_t>(r), model_.coefficient[entry]);
        }
    }
    RationalElimination elimination(value_);
    for (const auto& column : terms) {
        if (!column.empty()) elimination.addEquation(column);
    }
    return elimination.solve();
}

/// The check itself, exact.
bool Certificate::exceedsBox(const std::vector<mpq_class>& multipliers) const {
    mpq_class margin = 0;
    std::vector<mpq_class> combination(model_.nbColumns());
    for (std::size_t r = 0; r < row_.size(); ++r) {
        const mpq_class& y = multipliers[r];
        const std::size_t i = row_[r];
        const double side = sideOf(i, sgn(y));
        // Where the repair turned a sign, the row may have no such side and no say.
        if (sgn(y) == 0 || std::isinf(side)) continue;
        margin += y * mpq_class(side) - abs(y) * mpq_class(model_.tolerance[i]);
        for (auto k = model_.rowStart[i]; k < model_.rowStart[i + 1]; ++k) {
            const auto entry = static_cast<std::size_t>(k);
            combination[static_cast<std::size_t>(model_.column[entry])] +=
                y * mpq_class(model_.coefficient[entry]);
        }
    }
    for (std::size_t j = 0; j < combination.size(); ++j) {
        if (sgn(combination[j]) == 0) continue;
        const double bound = sgn(combination[j]) > 0 ? box_.upper[j] : box_.lower[j];
        if (std::isinf(bound)) return false;
        margin -= combination[j] * mpq_class(bound);
    }
    return sgn(margin) > 0;
}

bool Certificate::isProof() {
    const std::vector<std::uint8_t> cancels = columnsToCancel();
    if (cancels.empty() || row_.empty()) return false;
    const std::vector<mpq_class> multipliers = repaired(cancels);
    return !multipliers.empty() && exceedsBox(multipliers);
}

bool allFinite(std::span<const double> values) {
    return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
}

bool noneIsNan(std::span<const double> values) {
    return std::none_of(values.begin(), values.end(), [](double v) { return std::isnan(v); });
}

/// What is no number has no rational.
bool isNumeric(const LinearModel& model, const Box& box) {
    return allFinite(model.coefficient) && allFinite(model.tolerance) &&
           noneIsNan(model.rowLower) && noneIsNan(model.rowUpper) && noneIsNan(box.lower) &&
           noneIsNan(box.upper);
}

}  // namespace

bool provesInfeasibilityRationally(const LinearModel& model, const Box& box,
                                   std::span<const double> multipliers) {
    if (multipliers.size() != model.nbRows() || !isNumeric(model, box)) return false;
    for (const double share : {leastShare, 0.0}) {
        for (const double sign : {1.0, -1.0}) {
            if (Certificate(model, box, multipliers, sign, share).isProof()) return true;
        }
    }
    return false;
}

}  // namespace engine
