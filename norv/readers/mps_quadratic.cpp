#include <algorithm>
#include <cmath>
#include <tuple>

#include "readers/mps_parser.hpp"

namespace norv {
namespace {

bool listsOneTriangle(MpsSection section) {
    return section == MpsSection::quadraticObjective || section == MpsSection::quadraticTriangle;
}

/// What an entry adds to the coefficient of first * second in the row's function.
double coefficientOf(MpsSection section, bool isDiagonal, double value) {
    if (section == MpsSection::quadraticConstraint) return value;    // x'Qx, both triangles listed
    if (section == MpsSection::quadraticMatrix) return 0.5 * value;  // x'Qx / 2, both listed
    return isDiagonal ? 0.5 * value : value;                         // x'Qx / 2, one listed
}

}  // namespace

void MpsParser::enterQuadratic(MpsSection section, std::string_view keyword,
                               std::string_view rowName) {
    const bool forObjective =
        section == MpsSection::quadraticObjective || section == MpsSection::quadraticMatrix;
    if (forObjective && !rowName.empty()) {
        fail(rowName, "found " + quoted(rowName) + " after " + std::string(keyword) +
                          ", expected the end of the line");
    }
    if (!forObjective && rowName.empty()) {
        fail(keyword,
             "found " + std::string(keyword) + " alone, expected the name of a row after it");
    }
    const std::int32_t row = forObjective ? instance_.objective : rowOf(rowName);
    if (row == MpsInstance::noRow) {
        fail(keyword, "found " + std::string(keyword) + ", expected a row of type N in ROWS");
    }
    if (std::find(quadraticRows_.begin(), quadraticRows_.end(), row) != quadraticRows_.end()) {
        fail(keyword, "found a second quadratic section for row " + quoted(rowNames_[row]) +
                          ", expected one");
    }
    quadraticRows_.push_back(row);
}

void MpsParser::parseQuadratic(const MpsFields& fields) {
    if (fields.count() != 3 && fields.count() != 5) {
        failCount(fields, "3 or 5: column and one or two pairs of column and value");
    }
    addQuadratic(fields[0], fields[1], fields[2]);
    if (fields.count() == 5) addQuadratic(fields[0], fields[3], fields[4]);
}

void MpsParser::addQuadratic(std::string_view first, std::string_view second,
                             std::string_view value) {
    const std::int32_t j1 = columnOf(first);
    const std::int32_t j2 = columnOf(second);
    quadratic_.push_back({quadraticRows_.back(), std::min(j1, j2), std::max(j1, j2), j2 < j1,
                          section_, numberOf(value), placeOf(second)});
}

void MpsParser::finishQuadratic() {
    const auto pairOf = [](const QuadraticEntry& entry) {
        return std::tie(entry.row, entry.first, entry.second);
    };
    std::stable_sort(
        quadratic_.begin(), quadratic_.end(),
        [&](const auto& left, const auto& right) { return pairOf(left) < pairOf(right); });
    for (auto begin = quadratic_.begin(); begin != quadratic_.end();) {
        const auto end = std::find_if(begin, quadratic_.end(), [&](const QuadraticEntry& entry) {
            return pairOf(entry) != pairOf(*begin);
        });
        addQuadraticPair({begin, end});
        begin = end;
    }
}

void MpsParser::addQuadraticPair(std::span<const QuadraticEntry> entries) {
    const QuadraticEntry& entry = entries[0];
    const bool isDiagonal = entry.first == entry.second;
    const bool listedTwice = !listsOneTriangle(entry.section) && !isDiagonal;
    const std::string pair =
        quoted(columnNames_[entry.first]) + " and " + quoted(columnNames_[entry.second]);
    for (std::size_t k = 1; k < entries.size(); ++k) {
        if (listedTwice && k == 1 && entries[1].swapped != entry.swapped) continue;
        const std::string found = "found the entry of " + pair + " once more";
        if (!listsOneTriangle(entry.section)) {
            throw ReadError(complaint(text_.path(), entries[k].place, found));
        }
        // What other programs make of it.
        instance_.warnings.push_back(
            complaint(text_.path(), entries[k].place, found + ": the entries are added"));
    }
    if (listedTwice && (entries.size() == 1 || entries[1].value != entry.value)) {
        instance_.warnings.push_back(
            complaint(text_.path(), entry.place,
                      "the matrix is not symmetric in " + pair + ": its two entries are averaged"));
    }
    double coefficient = 0.0;
    for (const QuadraticEntry& each : entries) {
        coefficient += coefficientOf(each.section, isDiagonal, each.value);
    }
    // Doubled, because that is how the link will see a diagonal entry.
    if (!std::isfinite(2.0 * coefficient)) {
        throw ReadError(complaint(
            text_.path(), entries.back().place,
            "found a coefficient of " + pair + " beyond double precision, expected a finite one"));
    }
    instance_.quadraticTerms.push_back({entry.row, entry.first, entry.second, coefficient});
}

}  // namespace norv
