#include <algorithm>
#include <cmath>
#include <limits>

#include "readers/mps_parser.hpp"
#include "readers/number_text.hpp"

namespace norv {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// From here on a bound stands for none: the number that many writers put in place of infinity.
constexpr double infiniteBound = 1e30;

enum class ValueUse { needed, optional, unused };

struct BoundType {
    std::string_view keyword;
    ValueUse value;
};

constexpr BoundType boundTypes[] = {
    {"LO", ValueUse::needed},   {"UP", ValueUse::needed},   {"FX", ValueUse::needed},
    {"LI", ValueUse::needed},   {"UI", ValueUse::needed},   {"FR", ValueUse::unused},
    {"MI", ValueUse::unused},   {"PL", ValueUse::unused},   {"BV", ValueUse::unused},
    {"SC", ValueUse::optional}, {"SI", ValueUse::optional},
};

bool isDiscrete(MpsColumnKind kind) {
    return kind == MpsColumnKind::integer || kind == MpsColumnKind::binary ||
           kind == MpsColumnKind::semiInteger;
}

bool isSemi(MpsColumnKind kind) {
    return kind == MpsColumnKind::semiContinuous || kind == MpsColumnKind::semiInteger;
}

}  // namespace

void MpsParser::parseBound(const MpsFields& fields) {
    const auto* const type =
        std::find_if(std::begin(boundTypes), std::end(boundTypes),
                     [&](const BoundType& each) { return each.keyword == fields[0]; });
    if (type == std::end(boundTypes)) {
        fail(fields[0], "found " + quoted(fields[0]) + ", expected the type of a bound: " +
                            "LO, UP, FX, FR, MI, PL, BV, LI, UI, SC or SI");
    }
    const bool needsValue = type->value == ValueUse::needed;
    if (fields.count() < (needsValue ? 3U : 2U) || fields.count() > 4) {
        failCount(fields, needsValue ? "3 or 4: type, set (or none), column and value of a bound"
                                     : "2 to 4: type, set (or none), column and value (or none)");
    }
    // Three fields are set and column, or column and value; the names tell when both are possible.
    const bool hasSet =
        fields.count() == 4 || (fields.count() == 3 && !needsValue &&
                                (columnNames_.find(fields[2]) != NameIndex::absent ||
                                 columnNames_.find(fields[1]) == NameIndex::absent));
    const std::size_t columnField = hasSet ? 2 : 1;
    const std::int32_t column = columnOf(fields[columnField]);
    std::string_view value;
    if (columnField + 1 < fields.count()) value = fields[columnField + 1];
    if (!takesSet(bounds_, hasSet ? fields[1] : std::string_view())) return;
    applyBound(type->keyword, column, value);
}

void MpsParser::applyBound(std::string_view type, std::int32_t column, std::string_view value) {
    MpsColumnKind& kind = instance_.columns[static_cast<std::size_t>(column)].kind;
    if (type[1] == 'I' && (type[0] == 'L' || type[0] == 'U')) {
        kind = isSemi(kind) ? MpsColumnKind::semiInteger : MpsColumnKind::integer;
    }
    if (type == "LO" || type == "LI") {
        setLower(column, lowerOf(value));
    } else if (type == "UP" || type == "UI") {
        setUpper(column, upperOf(value));
    } else if (type == "FX") {
        const double fixed = numberOf(value);
        setLower(column, fixed);
        setUpper(column, fixed);
    } else if (type == "FR") {
        setLower(column, -infinity);
        setUpper(column, infinity);
    } else if (type == "MI") {
        setLower(column, -infinity);
    } else if (type == "PL") {
        setUpper(column, infinity);
    } else if (type == "BV") {
        kind = MpsColumnKind::binary;
        setLower(column, 0.0);
        setUpper(column, 1.0);
    } else {
        kind = type == "SI" || isDiscrete(kind) ? MpsColumnKind::semiInteger
                                                : MpsColumnKind::semiContinuous;
        setUpper(column, value.empty() ? infinity : upperOf(value));
    }
}

void MpsParser::setLower(std::int32_t column, double lower) {
    const auto j = static_cast<std::size_t>(column);
    ColumnState& state = columnStates_[j];
    if (state.lowerGiven && instance_.columns[j].lower != lower) {
        warn(lines_.line(), "the lower bound of " + quoted(instance_.columns[j].name) +
                                " is given again: the later one is taken");
    }
    state.lowerGiven = true;
    instance_.columns[j].lower = lower;
}

void MpsParser::setUpper(std::int32_t column, double upper) {
    const auto j = static_cast<std::size_t>(column);
    ColumnState& state = columnStates_[j];
    if (state.upperGiven && instance_.columns[j].upper != upper) {
        warn(lines_.line(), "the upper bound of " + quoted(instance_.columns[j].name) +
                                " is given again: the later one is taken");
    }
    state.upperGiven = true;
    state.upperLine = lineNumber();
    instance_.columns[j].upper = upper;
}

double MpsParser::boundOf(std::string_view field) const {
    const NumberText number = parseNumber(field);
    if (number.fault != NumberFault::none) return numberOf(field);  // complains
    if (std::fabs(number.value) < infiniteBound) return number.value;
    return number.value > 0.0 ? infinity : -infinity;
}

double MpsParser::lowerOf(std::string_view field) const {
    const double lower = boundOf(field);
    if (lower == infinity) fail(field, "found " + quoted(field) + ", expected a lower bound");
    return lower;
}

double MpsParser::upperOf(std::string_view field) const {
    const double upper = boundOf(field);
    if (upper == -infinity) fail(field, "found " + quoted(field) + ", expected an upper bound");
    return upper;
}

void MpsParser::finishBounds() {
    std::size_t nbOpenIntegers = 0;
    std::string_view firstOpenInteger;
    for (std::size_t j = 0; j < instance_.columns.size(); ++j) {
        MpsColumn& column = instance_.columns[j];
        const ColumnState& state = columnStates_[j];
        if (column.upper < 0.0 && !state.lowerGiven) {
            column.lower = -infinity;
            instance_.warnings.push_back(
                complaint(text_.path(), {state.upperLine, 1},
                          "column " + quoted(column.name) + " has a negative upper bound and no " +
                              "lower one: its lower bound is taken as minus infinity"));
        }
        const bool fitsBinary = column.lower >= 0.0 && column.upper <= 1.0;
        if (column.kind == MpsColumnKind::binary && !fitsBinary) {
            column.kind = MpsColumnKind::integer;
        }
        if (column.kind != MpsColumnKind::integer || state.lowerGiven || state.upperGiven) continue;
        if (nbOpenIntegers++ == 0) firstOpenInteger = column.name;
        column.upper = settings_.integerUpper;
    }
    if (nbOpenIntegers > 0 && settings_.integerUpper == MpsSettings().integerUpper) {
        instance_.warnings.push_back(
            text_.path() + ": integer columns without bounds, " + std::to_string(nbOpenIntegers) +
            " from " + quoted(firstOpenInteger) +
            " on: the file format leaves it open, 0 and 1 are taken; with a bound PL, or with "
            "--intorg-upper=inf for all, 0 and infinity");
    }
}

}  // namespace norv
