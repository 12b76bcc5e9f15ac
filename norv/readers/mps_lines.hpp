#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace norv {

/// The sections of an .mps file. Those from `rows` on hold data lines of several fields.
enum class MpsSection {
    none,
    name,
    objectiveSense,
    objectiveName,
    rows,
    columns,
    rightHandSides,
    ranges,
    bounds,
    quadraticObjective,   ///< QUADOBJ: one triangle, with the factor 1/2
    quadraticTriangle,    ///< QSECTION: the same for a named row
    quadraticMatrix,      ///< QMATRIX: both triangles, with the factor 1/2
    quadraticConstraint,  ///< QCMATRIX: both triangles of a named row, without a factor
    specialOrdered,       ///< SOS, SETS: lines S1 and S2 open a set
    specialOrdered1,      ///< SOS1: of type 1 without such lines
    specialOrdered2,
    end,
};

/// The section that a header names, or `none`.
MpsSection sectionNamed(std::string_view keyword);

/// Walks over the lines of a text. Blank lines and comments, which start with * in column 1, are
/// left out, line ends (LF or CR LF) and trailing blanks cut off. The same text always gives the
/// same lines, so that two passes see the same.
class MpsLines {
public:
    explicit MpsLines(std::string_view text);

    /// Steps to the next line; false at the end of the text.
    bool next();

    [[nodiscard]] std::string_view line() const { return line_; }
    /// Counted from 1, left-out lines included; after the end, the number of the last line.
    [[nodiscard]] std::size_t number() const { return number_; }
    /// A section's first line starts in column 1, a data line does not.
    [[nodiscard]] bool isHeader() const { return line_[0] != ' ' && line_[0] != '\t'; }

private:
    std::string_view rest_;
    std::string_view line_;
    std::size_t number_ = 0;
};

/// How data lines are cut into fields.
enum class MpsLayout {
    free,   ///< at blanks and tabs
    cards,  ///< at the fixed columns 2-3, 5-12, 15-22, 25-36, 40-47, 50-61
};

/// Fields of a line, left to right, each a view into it. Made once and filled line by line.
class MpsFields {
public:
    static constexpr std::size_t most = 8;

    void cut(std::string_view line, MpsLayout layout);

    /// May exceed `most`: further fields are counted, not kept.
    [[nodiscard]] std::size_t count() const { return count_; }
    std::string_view operator[](std::size_t k) const { return fields_[k]; }

private:
    void cutAtBlanks(std::string_view line);
    void cutAtColumns(std::string_view line);
    void append(std::string_view text);

    std::array<std::string_view, most> fields_;  ///< those from count_ on are of earlier lines
    std::size_t count_ = 0;
};

/// The first field of a line that is not blank.
std::string_view firstWord(std::string_view line);

}  // namespace norv
