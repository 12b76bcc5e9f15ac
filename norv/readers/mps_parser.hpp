#pragma once

#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "readers/input_text.hpp"
#include "readers/mps_instance.hpp"
#include "readers/mps_layout.hpp"
#include "readers/mps_lines.hpp"
#include "readers/name_index.hpp"
#include "readers/read_error.hpp"

namespace norv {

/// One pass over an .mps text. Every member function works on the current line; its source file is
/// named after the section it reads. The first fault leaves as ReadError.
class MpsParser {
public:
    MpsParser(const InputText& text, MpsLayoutFinding layout, const MpsSettings& settings);
    MpsInstance parse();

private:
    /// Of several right-hand sides, ranges or bounds the first that is named is taken. Lines
    /// without a set's name belong to it.
    struct SetChoice {
        std::string_view taken;
        std::vector<std::string_view> skipped;
    };

    /// A pair of fields "name value" and where it stands.
    struct RowValue {
        std::int32_t row;
        double value;
        std::string_view rowField;
    };

    struct ColumnState {
        std::uint32_t line = 0;       ///< of its first entry
        std::uint32_t upperLine = 0;  ///< of its upper bound
        bool lowerGiven = false;
        bool upperGiven = false;
    };

    /// The special ordered set that the next members belong to, the last of the instance's.
    struct OpenSet {
        bool isOpen = false;
        bool hasHeader = false;  ///< an S1 or S2 line opened it
        std::string_view label;  ///< what member lines may have in front, beside the set's name
    };

    struct QuadraticEntry {
        std::int32_t row;  ///< noRow: the objective of an instance without one
        std::int32_t first;
        std::int32_t second;
        bool swapped;  ///< the file has second before first
        MpsSection section;
        double value;
        Place place;
    };

    // mps_parser.cpp: headers, the order of sections, the small sections.
    void parseHeader();
    void enterSection(MpsSection section, std::string_view keyword, std::string_view rest);
    void checkOrder(MpsSection section, std::string_view keyword) const;
    void parseDataLine();
    void parseSense(std::string_view word);
    void parseObjectiveName(std::string_view name);
    void finish();

    // mps_rows_columns.cpp
    void parseRow(const MpsFields& fields);
    void settleObjective();
    void parseColumn(const MpsFields& fields);
    void parseMarker(const MpsFields& fields);
    void startColumn(std::string_view name);
    void reserveColumns();
    void addEntry(std::string_view rowName, std::string_view value);

    // mps_right_hand_sides.cpp
    void parseRightHandSide(const MpsFields& fields);
    void parseRange(const MpsFields& fields);
    bool takesSet(SetChoice& choice, std::string_view name);
    template <class Take>
    void parseRowValues(const MpsFields& fields, SetChoice& choice, Take take);

    // mps_bounds.cpp
    void parseBound(const MpsFields& fields);
    void applyBound(std::string_view type, std::int32_t column, std::string_view value);
    void setLower(std::int32_t column, double lower);
    void setUpper(std::int32_t column, double upper);
    double boundOf(std::string_view field) const;
    double lowerOf(std::string_view field) const;
    double upperOf(std::string_view field) const;
    void finishBounds();

    // mps_quadratic.cpp
    void enterQuadratic(MpsSection section, std::string_view keyword, std::string_view rowName);
    void parseQuadratic(const MpsFields& fields);
    void addQuadratic(std::string_view first, std::string_view second, std::string_view value);
    void finishQuadratic();
    void addQuadraticPair(std::span<const QuadraticEntry> entries);

    // mps_special_ordered.cpp
    void parseSpecialOrdered(const MpsFields& fields);
    void openSet(const MpsFields& fields);
    void continueSet(std::string_view label);
    void finishSpecialOrdered();
    void checkMembers(MpsSet& set) const;

    // Shared: fields into numbers and indices, complaints.
    double numberOf(std::string_view field) const;
    std::int32_t rowOf(std::string_view field) const;
    std::int32_t columnOf(std::string_view field) const;
    void checkName(std::string_view field) const;
    [[nodiscard]] std::uint32_t lineNumber() const;
    [[nodiscard]] Place placeOf(std::string_view field) const;
    [[noreturn]] void fail(std::string_view field, const std::string& message) const;
    [[noreturn]] void failCount(const MpsFields& fields, const std::string& expected) const;
    void warn(std::string_view field, const std::string& message);

    const InputText& text_;
    MpsLayoutFinding layout_;
    MpsSettings settings_;
    MpsLines lines_;
    MpsFields fields_;  ///< of the current data line
    MpsInstance instance_;
    MpsSection section_ = MpsSection::none;
    bool hasRows_ = false;
    bool hasColumns_ = false;
    bool hasSense_ = false;
    bool nextLineMayNameSense_ = false;
    std::string_view objectiveName_;
    Place objectiveNamePlace_ = {0, 0};

    NameIndex rowNames_;
    NameIndex columnNames_;
    std::vector<std::int32_t> lastColumnOfRow_;  ///< [rows] the column that named the row last
    std::vector<ColumnState> columnStates_;
    std::string_view currentColumn_;
    bool inIntegers_ = false;
    SetChoice rightHandSides_;
    SetChoice ranges_;
    SetChoice bounds_;
    std::vector<bool> hasRightHandSide_;  ///< [rows]

    std::vector<QuadraticEntry> quadratic_;
    std::vector<std::int32_t> quadraticRows_;  ///< rows that had a quadratic section
    OpenSet openSet_;
    std::set<std::string_view> labelledSets_;  ///< those that no S1 or S2 line opened
};

}  // namespace norv
