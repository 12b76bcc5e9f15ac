#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "readers/read_error.hpp"

namespace norv {

/// An .mps file as it was understood, before a model is built from it. Names are views into the
/// text that was read. Numbers are finite but for bounds, whose infinities are those of IEEE.

enum class MpsRowType : char { free = 'N', equality = 'E', less = 'L', greater = 'G' };

struct MpsRow {
    std::string_view name;
    MpsRowType type;
    double rightHandSide = 0.0;
    bool isRange = false;
    double range = 0.0;  ///< as in the file; read through `sidesOf`
};

/// What a row's function is held between.
struct Sides {
    double lower;
    double upper;
};
Sides sidesOf(const MpsRow& row);

enum class MpsColumnKind : std::uint8_t {
    continuous,
    binary,  ///< by a BV bound
    integer,
    semiContinuous,
    semiInteger,
};

struct MpsColumn {
    std::string_view name;
    MpsColumnKind kind = MpsColumnKind::continuous;
    double lower = 0.0;
    double upper = std::numeric_limits<double>::infinity();
};

struct MpsEntry {
    std::int32_t row;
    double value;
};

/// coefficient * first * second in the function of `row`; first <= second.
struct MpsQuadraticTerm {
    std::int32_t row;
    std::int32_t first;
    std::int32_t second;
    double coefficient;
};

struct MpsSetMember {
    std::int32_t column;
    double weight;
    Place place;
};

/// A special ordered set.
struct MpsSet {
    std::string_view name;
    std::int32_t type;                  ///< 1 or 2
    std::vector<MpsSetMember> members;  ///< by ascending weight, none twice
};

/// What the file format leaves open.
struct MpsSettings {
    /// Of integer columns between markers that have no bound at all. Most programs take 1.
    double integerUpper = 1.0;
};

struct MpsInstance {
    static constexpr std::int32_t noRow = -1;

    std::string name;
    bool maximise = false;
    double objectiveConstant = 0.0;
    /// In file order, the objective among them.
    std::vector<MpsRow> rows;
    /// Index of the objective's row, or noRow when no row is free.
    std::int32_t objective = noRow;
    std::vector<MpsColumn> columns;
    /// Entries of all columns, one column after another; column j's are those from
    /// columnStarts[j] up to columnStarts[j + 1]. Explicit zeros are kept.
    std::vector<MpsEntry> entries;
    std::vector<std::size_t> columnStarts;
    /// Sorted by row, first, second; each pair once.
    std::vector<MpsQuadraticTerm> quadraticTerms;
    std::vector<MpsSet> sets;
    /// What was read but not taken as it stands, "file:line:column: ...".
    std::vector<std::string> warnings;
};

}  // namespace norv
