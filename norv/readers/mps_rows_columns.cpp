#include "readers/mps_parser.hpp"

namespace norv {

void MpsParser::parseRow(const MpsFields& fields) {
    if (fields.count() != 2) failCount(fields, "2: type and name of a row");
    const std::string_view type = fields[0];
    if (type.size() != 1 || std::string_view("NELG").find(type[0]) == std::string_view::npos) {
        fail(type, "found " + quoted(type) + ", expected the type of a row: N, E, L or G");
    }
    checkName(fields[1]);
    if (!rowNames_.insert(fields[1]).isNew) {
        fail(fields[1], "found row " + quoted(fields[1]) + " for the second time");
    }
    MpsRow row;
    row.name = fields[1];
    row.type = static_cast<MpsRowType>(type[0]);
    instance_.rows.push_back(row);
}

void MpsParser::settleObjective() {
    if (!objectiveName_.empty()) {
        instance_.objective = rowNames_.find(objectiveName_);
        const bool isFree =
            instance_.objective != NameIndex::absent &&
            instance_.rows[static_cast<std::size_t>(instance_.objective)].type == MpsRowType::free;
        if (isFree) return;
        throw ReadError(complaint(text_.path(), objectiveNamePlace_,
                                  "found " + quoted(objectiveName_) +
                                      " as objective, expected the name of a row of type N"));
    }
    for (std::size_t i = 0; i < instance_.rows.size(); ++i) {
        if (instance_.rows[i].type != MpsRowType::free) continue;
        instance_.objective = static_cast<std::int32_t>(i);
        return;
    }
    warn(lines_.line(), "no row of type N: the objective is 0");
}

void MpsParser::parseColumn(const MpsFields& fields) {
    if (fields.count() >= 2 && fields[1][0] == '\'' &&
        lines_.line().find("'MARKER'") != std::string_view::npos) {
        fields_.cut(lines_.line(), MpsLayout::free);  // markers need not keep to the columns
        if (fields[1] == "'MARKER'") return parseMarker(fields);
        fields_.cut(lines_.line(), layout_.layout);
    }
    if (fields.count() != 3 && fields.count() != 5) {
        failCount(fields, "3 or 5: column and one or two pairs of row and value");
    }
    rowNames_.prefetch(fields[1]);
    if (fields.count() == 5) rowNames_.prefetch(fields[3]);
    if (fields[0] != currentColumn_) startColumn(fields[0]);
    addEntry(fields[1], fields[2]);
    if (fields.count() == 5) addEntry(fields[3], fields[4]);
}

void MpsParser::parseMarker(const MpsFields& fields) {
    if (fields.count() != 3) failCount(fields, "3: name, 'MARKER' and kind of a marker");
    const std::string_view kind = fields[2];
    if (kind != "'INTORG'" && kind != "'INTEND'") {
        fail(kind, "found " + quoted(kind) + ", expected 'INTORG' or 'INTEND'");
    }
    inIntegers_ = kind == "'INTORG'";
}

/// Room for columns and entries of usual length. Memory that is never touched costs nothing;
/// growing would touch everything again.
void MpsParser::reserveColumns() {
    constexpr std::size_t bytesPerEntry = 24;
    constexpr std::size_t bytesPerColumn = 100;
    const std::size_t size = text_.text().size();
    instance_.entries.reserve(size / bytesPerEntry);
    instance_.columns.reserve(size / bytesPerColumn);
    instance_.columnStarts.reserve(size / bytesPerColumn);
    columnStates_.reserve(size / bytesPerColumn);
}

void MpsParser::startColumn(std::string_view name) {
    checkName(name);
    const NameIndex::Insertion insertion = columnNames_.insert(name);
    if (!insertion.isNew) {
        const ColumnState& state = columnStates_[static_cast<std::size_t>(insertion.index)];
        fail(name, "found column " + quoted(name) + " again after other columns, expected its " +
                       "entries together (they start in line " + std::to_string(state.line) + ")");
    }
    currentColumn_ = name;
    MpsColumn column;
    column.name = name;
    column.kind = inIntegers_ ? MpsColumnKind::integer : MpsColumnKind::continuous;
    instance_.columns.push_back(column);
    instance_.columnStarts.push_back(instance_.entries.size());
    ColumnState state;
    state.line = lineNumber();
    columnStates_.push_back(state);
}

void MpsParser::addEntry(std::string_view rowName, std::string_view value) {
    const std::int32_t row = rowOf(rowName);
    const std::int32_t column = columnNames_.size() - 1;
    std::int32_t& lastColumn = lastColumnOfRow_[static_cast<std::size_t>(row)];
    if (lastColumn == column) {
        fail(rowName, "found row " + quoted(rowName) + " for the second time in column " +
                          quoted(currentColumn_));
    }
    lastColumn = column;
    instance_.entries.push_back({row, numberOf(value)});
}

}  // namespace norv
