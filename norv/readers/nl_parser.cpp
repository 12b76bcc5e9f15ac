#include "readers/nl_parser.hpp"

#include <algorithm>
#include <utility>

#include "readers/nl_reader.hpp"
#include "readers/read_error.hpp"

namespace norv {

namespace {

std::string nameIn(const std::vector<std::string>& names, std::int32_t index, char initial) {
    const auto k = static_cast<std::size_t>(index);
    const bool isNamed = k < names.size() && !names[k].empty();
    return isNamed ? names[k] : initial + std::to_string(index + 1);
}

}  // namespace

std::string NlInstance::rowName(std::int32_t row) const {
    return nameIn(names.rows, row, 'e');
}

std::string NlInstance::variableName(std::int32_t variable) const {
    return nameIn(names.variables, variable, 'x');
}

NlParser::NlParser(const InputText& file, NlNames names, std::int32_t objective,
                   std::int32_t nbValueVariables)
    : input_(file),
      expressions_(input_, instance_.expressions),
      nbValueVariables_(nbValueVariables) {
    instance_.path = file.path();
    instance_.names = std::move(names);
    instance_.objective = objective - 1;
}

NlInstance NlParser::parse() {
    instance_.header = readNlHeader(input_);
    const NlHeader& header = instance_.header;
    if (header.nbObjectives == 0) instance_.objective = -1;
    if (instance_.objective >= header.nbObjectives) {
        throw ReadError(instance_.path + ": found " + std::to_string(header.nbObjectives) +
                        " objectives, expected at least " +
                        std::to_string(instance_.objective + 1) + ", whose number is asked for");
    }
    instance_.expressions = ExpressionStore(header.nbVariables + nbValueVariables_);
    instance_.variables.resize(static_cast<std::size_t>(header.nbVariables));
    instance_.rows.resize(static_cast<std::size_t>(header.nbRows));
    instance_.logicalRows.resize(static_cast<std::size_t>(header.nbLogicalRows), noNode);
    instance_.objectives.resize(static_cast<std::size_t>(header.nbObjectives));
    expressions_.setCounts(header);
    makeRoom();
    while (!input_.atEnd()) {
        const std::size_t place = input_.offset();
        constexpr const char* expected = "a segment: one of C L O V F S d x r b k K J G";
        const char kind = input_.letter(expected);
        if (std::string_view("CLOVFSdxrbkKJG").find(kind) == std::string_view::npos)
            input_.refuseAt(place, quoted({&kind, 1}), expected);
        readSegment(kind);
    }
    checkCounts();
    instance_.sets = specialOrdered_.sets(instance_);
    instance_.piecewise = expressions_.piecewise();
    instance_.hasValueVariables = nbValueVariables_ > 0;
    if (header.nbObjectives > 1) {
        const std::string taken =
            instance_.objective < 0 ? "none" : "number " + std::to_string(instance_.objective + 1);
        instance_.warnings.push_back(instance_.path + ": found " +
                                     std::to_string(header.nbObjectives) + " objectives, " + taken +
                                     " is taken");
    }
    return std::move(instance_);
}

/// Growing step by step would touch most memory twice. An expression takes five bytes of text an
/// item, about, and every other item a node; the rest is never touched.
void NlParser::makeRoom() {
    const NlHeader& header = instance_.header;
    const std::size_t nbBytes = input_.nbBytesLeft();
    const bool hasExpressions = header.nbNonlinearRows > 0 || header.nbNonlinearObjectives > 0 ||
                                header.nbLogicalRows > 0 || header.nbDefinedVariables > 0;
    if (hasExpressions) instance_.expressions.reserve(nbBytes / 8, nbBytes / 5);
    instance_.entries.reserve(
        std::min(static_cast<std::size_t>(header.nbJacobianEntries), nbBytes));
}

void NlParser::readSegment(char kind) {
    switch (kind) {
        case 'C':
            return readRowExpression();
        case 'L':
            return readLogicalRow();
        case 'O':
            return readObjective();
        case 'V':
            return expressions_.readDefinedVariable();
        case 'F':
            return expressions_.readImportedFunction();
        case 'S':
            return readSuffix();
        case 'd':
        case 'x':
            return readStartingPoint(/*isPrimal=*/kind == 'x');
        case 'r':
            return readRowBounds();
        case 'b':
            return readVariableBounds();
        case 'k':
        case 'K':
            return readColumnCounts(/*areCumulative=*/kind == 'k');
        case 'J':
            return readRowEntries();
        default:
            return readGradient();
    }
}

void NlParser::readRowExpression() {
    const std::size_t place = input_.offset();
    const std::int32_t i =
        input_.integerWithin(0, instance_.header.nbRows - 1, "the number of a row");
    NodeIndex& expression = instance_.rows[static_cast<std::size_t>(i)].expression;
    if (expression != noNode) input_.refuseAt(place, "a second segment C", "one for each row");
    expression = expressions_.read();
    expressions_.refuseForeign(expression, "row " + instance_.rowName(i));
}

void NlParser::readLogicalRow() {
    const std::size_t place = input_.offset();
    const std::int32_t i =
        input_.integerWithin(0, instance_.header.nbLogicalRows - 1, "the number of a logical row");
    NodeIndex& expression = instance_.logicalRows[static_cast<std::size_t>(i)];
    if (expression != noNode)
        input_.refuseAt(place, "a second segment L", "one for each logical row");
    expression = instance_.expressions.truth(expressions_.read());
    expressions_.refuseForeign(expression,
                               "logical row " + instance_.rowName(instance_.header.nbRows + i));
}

void NlParser::readObjective() {
    const std::size_t place = input_.offset();
    const std::int32_t k =
        input_.integerWithin(0, instance_.header.nbObjectives - 1, "the number of an objective");
    NlObjective& objective = instance_.objectives[static_cast<std::size_t>(k)];
    if (objective.expression != noNode)
        input_.refuseAt(place, "a second segment O", "one for each objective");
    objective.maximise = input_.integerWithin(0, 1, "0 (minimise) or 1 (maximise)") == 1;
    objective.expression = expressions_.read();
    if (k == instance_.objective) expressions_.refuseForeign(objective.expression, "the objective");
}

/// Suffixes tell solvers more than the host has a place for, but for special ordered sets.
void NlParser::readSuffix() {
    constexpr std::int32_t kindMask = 3;  // 0: variables
    constexpr std::int32_t realFlag = 4;
    constexpr std::int32_t askedFlag = 8;  // the client declares it and wants to read it back
    const std::int32_t flags = input_.integerWithin(0, 15, "the kind of a suffix");
    const std::int32_t nbValues = input_.count(0, "a count of values");
    const std::string_view name = input_.word("the name of a suffix");
    auto& asked = instance_.askedSuffixes;
    if ((flags & askedFlag) != 0 && std::ranges::find(asked, name) == asked.end())
        asked.emplace_back(name);
    const std::int32_t nbVariables = instance_.header.nbVariables;
    std::vector<double>* const values =
        (flags & kindMask) == 0 ? specialOrdered_.valuesOf(name, nbVariables) : nullptr;
    if (values == nullptr && name == "sosno") {
        instance_.warnings.push_back(instance_.path + ": found suffix sosno on items that are no " +
                                     "variables, it has no effect");
    }
    for (std::int32_t k = 0; k < nbValues; ++k) {
        const bool isReal = (flags & realFlag) != 0;
        if (values == nullptr) {
            input_.integer("the number of an item");
            readSuffixValue(isReal, /*hasUse=*/false);
        } else {
            const std::int32_t j =
                input_.integerWithin(0, nbVariables - 1, "the number of a variable");
            (*values)[static_cast<std::size_t>(j)] = readSuffixValue(isReal, /*hasUse=*/true);
        }
    }
}

double NlParser::readSuffixValue(bool isReal, bool hasUse) {
    if (!isReal) return input_.integer("a value");
    return hasUse ? input_.finiteNumber("a finite value") : input_.number("a value");
}

void NlParser::readStartingPoint(bool isPrimal) {
    const NlHeader& header = instance_.header;
    const std::int32_t last = isPrimal ? header.nbVariables : header.nbRows + header.nbLogicalRows;
    const std::int32_t nbValues = input_.count(0, "a count of starting values");
    for (std::int32_t k = 0; k < nbValues; ++k) {
        const std::int32_t index = input_.integerWithin(
            0, last - 1, isPrimal ? "the number of a variable" : "the number of a row");
        const double value = input_.finiteNumber("a finite starting value");
        if (isPrimal) instance_.variables[static_cast<std::size_t>(index)].level = value;
    }
}

void NlParser::readBounds(double& lower, double& upper, bool isRow) {
    constexpr const char* expected = "the kind of a bound, 0 to 4";
    if (input_.atEnd()) input_.refuse(expected);
    const std::size_t place = input_.offset();
    switch (input_.letter(expected)) {
        case '0':
            lower = input_.number("a lower bound");
            upper = input_.number("an upper bound");
            break;
        case '1':
            upper = input_.number("an upper bound");
            break;
        case '2':
            lower = input_.number("a lower bound");
            break;
        case '3':
            break;
        case '4':
            lower = upper = input_.finiteNumber("a finite value");
            break;
        default:
            input_.refuseAt(
                place, "another kind of bound",
                isRow ? "0 to 4; complementarity conditions are not supported" : "0 to 4");
    }
    constexpr double infinity = std::numeric_limits<double>::infinity();
    if (lower == infinity || upper == -infinity)
        input_.refuseAt(place, "a bound that nothing can meet", "bounds that leave room");
}

void NlParser::readRowBounds() {
    hasRowBounds_ = true;
    std::int32_t nbRanges = 0;
    std::int32_t nbEqualities = 0;
    for (NlRow& row : instance_.rows) {
        readBounds(row.lower, row.upper, /*isRow=*/true);
        if (row.lower == row.upper) {
            ++nbEqualities;
        } else if (std::isfinite(row.lower) && std::isfinite(row.upper)) {
            ++nbRanges;
        }
    }
    const NlHeader& header = instance_.header;
    if (nbRanges != header.nbRanges || nbEqualities != header.nbEqualities) {
        instance_.warnings.push_back(
            instance_.path + ": found " + std::to_string(nbRanges) + " ranges and " +
            std::to_string(nbEqualities) + " equalities, the header announces " +
            std::to_string(header.nbRanges) + " and " + std::to_string(header.nbEqualities));
    }
}

void NlParser::readVariableBounds() {
    hasVariableBounds_ = true;
    for (NlVariable& variable : instance_.variables)
        readBounds(variable.lower, variable.upper, /*isRow=*/false);
}

void NlParser::readColumnCounts(bool areCumulative) {
    const std::int32_t nbColumns = std::max(instance_.header.nbVariables - 1, 0);
    input_.integerWithin(nbColumns, nbColumns, "the count of columns but the last,");
    const std::int32_t nbEntries = instance_.header.nbJacobianEntries;
    columnCounts_.assign(static_cast<std::size_t>(nbColumns), 0);
    std::int32_t before = 0;
    for (std::int32_t& each : columnCounts_) {
        const std::int32_t first = areCumulative ? before : 0;
        const std::int32_t last = areCumulative ? nbEntries : nbEntries - before;
        const std::int32_t value = input_.integerWithin(first, last, "a count of entries");
        each = areCumulative ? value - before : value;
        before += each;
    }
}

void NlParser::readRowEntries() {
    const NlHeader& header = instance_.header;
    const std::int32_t row = input_.integerWithin(0, header.nbRows - 1, "the number of a row");
    const std::int32_t nbEntries = input_.count(0, "a count of entries");
    for (std::int32_t k = 0; k < nbEntries; ++k) {
        const LinearTerm term = readTerm(row);
        instance_.entries.push_back({row, term.variable, term.coefficient});
    }
}

LinearTerm NlParser::readTerm(std::int32_t row) {
    const std::int32_t j =
        input_.integerWithin(0, instance_.header.nbVariables - 1, "the number of a variable");
    static_cast<void>(input_.atEnd());  // steps over blanks, so that the place is the number's
    const std::size_t place = input_.offset();
    const double coefficient = input_.finiteNumber("a finite coefficient");
    if (coefficientSums_.add(row, j, coefficient)) return {j, coefficient};
    input_.refuseAt(place,
                    "a coefficient of variable " + instance_.variableName(j) +
                        " that adds up beyond double precision with earlier ones",
                    "a finite sum");
}

void NlParser::readGradient() {
    const NlHeader& header = instance_.header;
    const std::int32_t objective =
        input_.integerWithin(0, header.nbObjectives - 1, "the number of an objective");
    const std::int32_t nbEntries = input_.count(0, "a count of entries");
    auto& terms = instance_.objectives[static_cast<std::size_t>(objective)].terms;
    for (std::int32_t k = 0; k < nbEntries; ++k) terms.push_back(readTerm(-1 - objective));
}

/// What only the whole file can tell.
void NlParser::checkCounts() {
    const NlHeader& header = instance_.header;
    if (!hasRowBounds_ && header.nbRows > 0) input_.refuse("a segment r, the bounds of the rows");
    if (!hasVariableBounds_ && header.nbVariables > 0)
        input_.refuse("a segment b, the bounds of the variables");
    for (const NodeIndex each : instance_.logicalRows) {
        if (each == noNode) input_.refuse("a segment L for each logical row");
    }
    const std::size_t nbAnnounced = static_cast<std::size_t>(header.nbJacobianEntries);
    if (instance_.entries.size() != nbAnnounced) {
        throw ReadError(instance_.path + ": found " + std::to_string(instance_.entries.size()) +
                        " entries in segments J, expected " + std::to_string(nbAnnounced) +
                        " as in the header");
    }
    std::vector<std::int32_t> counts = columnCounts_;
    for (const NlEntry& each : instance_.entries) {
        const auto j = static_cast<std::size_t>(each.variable);
        if (j < counts.size()) --counts[j];
    }
    for (std::size_t j = 0; j < counts.size(); ++j) {
        if (counts[j] == 0) continue;
        throw ReadError(instance_.path + ": found " + std::to_string(columnCounts_[j] - counts[j]) +
                        " entries of variable " + std::to_string(j) + " in segments J, expected " +
                        std::to_string(columnCounts_[j]) + " as in segment k");
    }
}

bool looksLikeNl(std::string_view content) noexcept {
    return content.size() >= 2 && (content[0] == 'g' || content[0] == 'b') && content[1] >= '0' &&
           content[1] <= '9';
}

NlInstance readNl(const InputText& file, NlNames names, std::int32_t objective,
                  std::int32_t nbValueVariables) {
    return NlParser(file, std::move(names), objective, nbValueVariables).parse();
}

}  // namespace norv
