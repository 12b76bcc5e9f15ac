#include "readers/mps_parser.hpp"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "hostapi/codes.hpp"
#include "readers/mps_reader.hpp"
#include "readers/number_text.hpp"

namespace norv {
namespace {

constexpr std::size_t longestName = hostapi::longestText;

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string upperCase(std::string_view text) {
    std::string result(text);
    for (char& character : result) {
        if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 32);
    }
    return result;
}

/// The host's texts end at a null byte: one inside the file would cut a name short.
void refuseNullBytes(const InputText& text) {
    const std::size_t position = text.text().find('\0');
    if (position == std::string_view::npos) return;
    const std::string_view before = text.text().substr(0, position);
    const auto line = static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
    const std::size_t lineBegin = before.rfind('\n') + 1;  // npos + 1 is 0
    throw ReadError(complaint(text.path(), {line + 1, position - lineBegin + 1},
                              "found a null byte, expected text"));
}

}  // namespace

MpsInstance readMps(const InputText& text, const MpsSettings& settings) {
    refuseNullBytes(text);
    return MpsParser(text, recogniseMpsLayout(text.text()), settings).parse();
}

MpsParser::MpsParser(const InputText& text, MpsLayoutFinding layout, const MpsSettings& settings)
    : text_(text), layout_(layout), settings_(settings), lines_(text.text()) {}

MpsInstance MpsParser::parse() {
    while (section_ != MpsSection::end && lines_.next()) {
        if (lines_.isHeader() && !nextLineMayNameSense_) {
            parseHeader();
        } else {
            parseDataLine();
        }
    }
    if (section_ != MpsSection::end) {
        throw ReadError(complaint(text_.path(), {lines_.number() + 1, 1},
                                  "found the end of the file, expected ENDATA"));
    }
    finish();
    return std::move(instance_);
}

void MpsParser::parseHeader() {
    const std::string_view line = lines_.line();
    const std::string_view keyword = firstWord(line);
    const MpsSection section = sectionNamed(keyword);
    if (section == MpsSection::none) {
        fail(keyword, "found " + quoted(keyword) +
                          ", expected the name of a section (data lines start with a blank)");
    }
    checkOrder(section, keyword);
    enterSection(section, keyword, trimmed(line.substr(keyword.size())));
}

void MpsParser::checkOrder(MpsSection section, std::string_view keyword) const {
    const std::string found = "found " + std::string(keyword);
    if (section == MpsSection::rows && hasRows_) fail(keyword, found + " for the second time");
    if (section == MpsSection::columns && hasColumns_)
        fail(keyword, found + " for the second time");
    if (section == MpsSection::objectiveName && hasRows_) {
        fail(keyword, found + " after ROWS, expected it before");
    }
    if (section >= MpsSection::columns && !hasRows_) fail(keyword, found + ", expected ROWS first");
    if (section > MpsSection::columns && !hasColumns_) {
        fail(keyword, found + ", expected COLUMNS first");
    }
}

void MpsParser::enterSection(MpsSection section, std::string_view keyword, std::string_view rest) {
    if (section_ == MpsSection::rows) settleObjective();
    section_ = section;
    switch (section) {
        case MpsSection::name:
            instance_.name = rest;
            return;
        case MpsSection::objectiveSense:
            nextLineMayNameSense_ = rest.empty();
            if (!rest.empty()) parseSense(rest);
            return;
        case MpsSection::objectiveName:
            if (!rest.empty()) parseObjectiveName(rest);
            return;
        case MpsSection::quadraticObjective:
        case MpsSection::quadraticMatrix:
        case MpsSection::quadraticTriangle:
        case MpsSection::quadraticConstraint:
            enterQuadratic(section, keyword, rest);
            return;
        case MpsSection::specialOrdered:
        case MpsSection::specialOrdered1:
        case MpsSection::specialOrdered2:
            openSet_ = {};
            break;
        case MpsSection::rows:
            hasRows_ = true;
            break;
        case MpsSection::columns:
            hasColumns_ = true;
            reserveColumns();
            lastColumnOfRow_.assign(instance_.rows.size(), NameIndex::absent);
            hasRightHandSide_.assign(instance_.rows.size(), false);
            break;
        default:
            break;
    }
    if (!rest.empty()) {
        fail(rest, "found " + quoted(rest) + " after " + std::string(keyword) +
                       ", expected the end of the line (data lines start with a blank)");
    }
}

void MpsParser::parseDataLine() {
    if (nextLineMayNameSense_) {
        nextLineMayNameSense_ = false;
        return parseSense(trimmed(lines_.line()));
    }
    fields_.cut(lines_.line(), layout_.layout);
    const MpsFields& fields = fields_;
    switch (section_) {
        case MpsSection::objectiveName:
            return parseObjectiveName(trimmed(lines_.line()));
        case MpsSection::rows:
            return parseRow(fields);
        case MpsSection::columns:
            return parseColumn(fields);
        case MpsSection::rightHandSides:
            return parseRightHandSide(fields);
        case MpsSection::ranges:
            return parseRange(fields);
        case MpsSection::bounds:
            return parseBound(fields);
        case MpsSection::quadraticObjective:
        case MpsSection::quadraticMatrix:
        case MpsSection::quadraticTriangle:
        case MpsSection::quadraticConstraint:
            return parseQuadratic(fields);
        case MpsSection::specialOrdered:
        case MpsSection::specialOrdered1:
        case MpsSection::specialOrdered2:
            return parseSpecialOrdered(fields);
        default: {
            const std::string_view found = trimmed(lines_.line());
            fail(found, "found " + quoted(found) + ", expected the header of a section");
        }
    }
}

void MpsParser::parseSense(std::string_view word) {
    constexpr std::array<std::string_view, 3> maximum = {"MAX", "MAXIMIZE", "MAXIMISE"};
    constexpr std::array<std::string_view, 3> minimum = {"MIN", "MINIMIZE", "MINIMISE"};
    const std::string upper = upperCase(word);
    const bool isMaximum = std::find(maximum.begin(), maximum.end(), upper) != maximum.end();
    if (!isMaximum && std::find(minimum.begin(), minimum.end(), upper) == minimum.end()) {
        fail(word, "found " + quoted(word) + ", expected MAX or MIN");
    }
    if (hasSense_) fail(word, "found a second objective sense, expected one");
    hasSense_ = true;
    instance_.maximise = isMaximum;
}

void MpsParser::parseObjectiveName(std::string_view name) {
    if (!objectiveName_.empty()) {
        fail(name, "found a second name of the objective, expected one");
    }
    objectiveName_ = name;
    objectiveNamePlace_ = placeOf(name);
}

void MpsParser::finish() {
    const std::string_view endLine = lines_.line();
    if (!hasColumns_) fail(endLine, "found ENDATA, expected COLUMNS first");
    instance_.columnStarts.push_back(instance_.entries.size());
    if (inIntegers_) warn(endLine, "no 'INTEND' marker: the integer columns end with COLUMNS");
    if (lines_.next()) warn(lines_.line(), "what follows ENDATA is not read");
    finishBounds();
    finishQuadratic();
    finishSpecialOrdered();
    if (instance_.objective != MpsInstance::noRow) {
        const auto objective = static_cast<std::size_t>(instance_.objective);
        instance_.objectiveConstant = 0.0 - instance_.rows[objective].rightHandSide;
    }
}

double MpsParser::numberOf(std::string_view field) const {
    const NumberText number = parseNumber(field);
    if (number.fault == NumberFault::none && number.value - number.value == 0.0) {
        return number.value;
    }
    if (number.fault == NumberFault::outOfRange) {
        fail(field, "found " + quoted(field) + ", expected a number within double precision");
    }
    fail(field, "found " + quoted(field) + ", expected a finite number");
}

std::int32_t MpsParser::rowOf(std::string_view field) const {
    const std::int32_t row = rowNames_.find(field);
    if (row == NameIndex::absent) {
        fail(field, "found " + quoted(field) + ", expected the name of a row");
    }
    return row;
}

std::int32_t MpsParser::columnOf(std::string_view field) const {
    const std::int32_t column = columnNames_.find(field);
    if (column == NameIndex::absent) {
        fail(field, "found " + quoted(field) + ", expected the name of a column");
    }
    return column;
}

void MpsParser::checkName(std::string_view field) const {
    if (field.size() <= longestName) return;
    fail(field, "found a name of " + std::to_string(field.size()) + " bytes, expected at most " +
                    std::to_string(longestName));
}

std::uint32_t MpsParser::lineNumber() const {
    return static_cast<std::uint32_t>(
        std::min<std::size_t>(lines_.number(), std::numeric_limits<std::uint32_t>::max()));
}

Place MpsParser::placeOf(std::string_view field) const {
    return {lines_.number(), static_cast<std::size_t>(field.data() - lines_.line().data()) + 1};
}

void MpsParser::fail(std::string_view field, const std::string& message) const {
    throw ReadError(complaint(text_.path(), placeOf(field), message));
}

void MpsParser::failCount(const MpsFields& fields, const std::string& expected) const {
    std::string message = "found " + std::to_string(fields.count()) +
                          (fields.count() == 1 ? " field" : " fields") + ", expected " + expected;
    if (layout_.layout == MpsLayout::free && layout_.firstFreeLine != 0 &&
        layout_.firstFreeLine != lines_.number()) {
        message += " (names with blanks need the fixed columns, which line " +
                   std::to_string(layout_.firstFreeLine) + " leaves)";
    }
    fail(fields.count() == 0 ? lines_.line() : fields[0], message);
}

void MpsParser::warn(std::string_view field, const std::string& message) {
    instance_.warnings.push_back(complaint(text_.path(), placeOf(field), message));
}

}  // namespace norv
