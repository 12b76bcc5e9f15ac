#include <algorithm>
#include <cmath>
#include <limits>

#include "readers/mps_parser.hpp"

namespace norv {

Sides sidesOf(const MpsRow& row) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const double side = row.rightHandSide;
    const double width = std::fabs(row.range);
    switch (row.type) {
        case MpsRowType::less:
            return {row.isRange ? side - width : -infinity, side};
        case MpsRowType::greater:
            return {side, row.isRange ? side + width : infinity};
        case MpsRowType::equality:
            return {row.range < 0.0 ? side - width : side, row.range > 0.0 ? side + width : side};
        case MpsRowType::free:
            break;
    }
    return {-infinity, infinity};
}

bool MpsParser::takesSet(SetChoice& choice, std::string_view name) {
    if (choice.taken.empty()) choice.taken = name;
    if (name.empty() || name == choice.taken) return true;
    if (std::find(choice.skipped.begin(), choice.skipped.end(), name) == choice.skipped.end()) {
        choice.skipped.push_back(name);
        warn(name, "set " + quoted(name) + " is not used: the first set, " + quoted(choice.taken) +
                       ", is taken");
    }
    return false;
}

template <class Take>
void MpsParser::parseRowValues(const MpsFields& fields, SetChoice& choice, Take take) {
    if (fields.count() < 2 || fields.count() > 5) {
        failCount(fields, "2 to 5: set (or none) and one or two pairs of row and value");
    }
    const std::size_t first = fields.count() % 2;
    const bool taken = takesSet(choice, first == 1 ? fields[0] : std::string_view());
    for (std::size_t k = first; k < fields.count(); k += 2) {
        const RowValue pair = {rowOf(fields[k]), numberOf(fields[k + 1]), fields[k]};
        if (taken) take(pair);
    }
}

void MpsParser::parseRightHandSide(const MpsFields& fields) {
    parseRowValues(fields, rightHandSides_, [this](const RowValue& pair) {
        const auto row = static_cast<std::size_t>(pair.row);
        if (hasRightHandSide_[row]) {
            fail(pair.rowField, "found a second right-hand side of row " + quoted(pair.rowField) +
                                    ", expected one");
        }
        hasRightHandSide_[row] = true;
        instance_.rows[row].rightHandSide = pair.value;
        if (instance_.rows[row].type == MpsRowType::free && pair.row != instance_.objective) {
            warn(pair.rowField,
                 "the right-hand side of the free row " + quoted(pair.rowField) + " has no effect");
        }
    });
}

void MpsParser::parseRange(const MpsFields& fields) {
    parseRowValues(fields, ranges_, [this](const RowValue& pair) {
        MpsRow& row = instance_.rows[static_cast<std::size_t>(pair.row)];
        if (row.isRange) {
            fail(pair.rowField,
                 "found a second range of row " + quoted(pair.rowField) + ", expected one");
        }
        if (row.type == MpsRowType::free) {
            warn(pair.rowField,
                 "the range of the free row " + quoted(pair.rowField) + " has no effect");
            return;
        }
        row.isRange = true;
        row.range = pair.value;
    });
}

}  // namespace norv
